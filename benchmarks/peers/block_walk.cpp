// Reads every block of a file with libmatroska alone, touches two bytes of each frame, and prints what that took, as
// bench_play does: one JSON object. No frame is copied to where others could keep it, and none is queued.
#include <ebml/EbmlHead.h>
#include <ebml/EbmlStream.h>
#include <ebml/StdIOCallback.h>
#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxSemantic.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>

namespace {

using ElementPtr = std::unique_ptr<libebml::EbmlElement>;

struct Counts {
  std::uint64_t samples = 0;
  std::uint64_t bytes = 0;
  unsigned touched = 0;
};

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

void Count(libmatroska::KaxInternalBlock& block, Counts& counts) {
  for (unsigned k = 0; k < block.NumberFrames(); ++k) {
    const libmatroska::DataBuffer& frame = block.GetBuffer(k);
    ++counts.samples;
    counts.bytes += frame.Size();
    if (frame.Size() != 0) counts.touched += frame.Buffer()[0] + frame.Buffer()[frame.Size() - 1];
  }
}

// Each child of the Cluster by itself; blocks in groups as well.
void ReadChildren(libebml::EbmlStream& stream, libebml::EbmlMaster& master, Counts& counts) {
  libebml::IOCallback& input = stream.I_O();
  const std::uint64_t end = master.GetEndPosition();
  while (input.getFilePointer() < end) {
    int upper = 0;
    const ElementPtr child(stream.FindNextElement(EBML_CONTEXT(&master), upper, end - input.getFilePointer(), false));
    if (!child || upper > 0) return;
    const libebml::EbmlId id(*child);
    if (id == EBML_ID(libmatroska::KaxSimpleBlock) || id == EBML_ID(libmatroska::KaxBlock)) {
      child->ReadData(input, libebml::SCOPE_ALL_DATA);
      Count(static_cast<libmatroska::KaxInternalBlock&>(*child), counts);
    } else if (id == EBML_ID(libmatroska::KaxBlockGroup)) {
      ReadChildren(stream, static_cast<libebml::EbmlMaster&>(*child), counts);
    }
    input.setFilePointer(static_cast<std::int64_t>(child->GetEndPosition()));
  }
}

Counts ReadAll(const char* path) {
  constexpr std::uint64_t kAll = std::numeric_limits<std::uint32_t>::max();
  libebml::StdIOCallback input(path, MODE_READ);
  libebml::EbmlStream stream(input);
  Counts counts;
  const ElementPtr head(stream.FindNextID(EBML_INFO(libebml::EbmlHead), kAll));
  if (!head) return counts;
  head->SkipData(stream, EBML_CONTEXT(head.get()));
  const ElementPtr segment(stream.FindNextID(EBML_INFO(libmatroska::KaxSegment), kAll));
  while (segment) {
    int upper = 0;
    const ElementPtr child(stream.FindNextElement(EBML_CONTEXT(segment.get()), upper, kAll, false));
    if (!child || upper > 0) break;
    if (libebml::EbmlId(*child) == EBML_ID(libmatroska::KaxCluster)) {
      ReadChildren(stream, static_cast<libebml::EbmlMaster&>(*child), counts);
    }
    input.setFilePointer(static_cast<std::int64_t>(child->GetEndPosition()));
  }
  return counts;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: block_walk FILE\n");
    return 2;
  }
  rusage before{};
  rusage after{};
  getrusage(RUSAGE_SELF, &before);
  const auto start = std::chrono::steady_clock::now();
  const Counts counts = ReadAll(argv[1]);
  const double wall = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  getrusage(RUSAGE_SELF, &after);
  std::printf(R"({"wall_ms":%.3f,"user_ms":%.3f,"system_ms":%.3f,"peak_bytes":%ld,"samples":%ju,"bytes":%ju,"mark":%u})"
              "\n",
              wall, Milliseconds(after.ru_utime) - Milliseconds(before.ru_utime),
              Milliseconds(after.ru_stime) - Milliseconds(before.ru_stime), after.ru_maxrss * 1024,
              static_cast<std::uintmax_t>(counts.samples), static_cast<std::uintmax_t>(counts.bytes), counts.touched);
  return 0;
}
