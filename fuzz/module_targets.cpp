// The targets below the filter: the scanner over the input as a file, or over a file that has a track of the input.
#include <algorithm>

#include "fuzz/scan.h"
#include "fuzz/targets.h"
#include "scanner/index/index_search.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/memory_reader.h"

namespace tarvex::fuzz {

namespace {

using namespace test;  // NOLINT: the writer's vocabulary

ByteString Copied(Input bytes) { return {bytes.begin(), bytes.end()}; }

void Scan(ByteString file, const std::function<void(CEbmlScanner&)>& use) {
  MemoryReader reader(std::move(file));
  volatile std::uint64_t used = ScanStream(reader, use).sum;
  static_cast<void>(used);
}

/// Takes values from the front of an input; zero when it is used up.
class Reader {
 public:
  explicit Reader(Input input) : m_rest(input) {}
  std::uint64_t Number(std::size_t bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : Take(bytes)) value = value << 8 | byte;
    return value;
  }
  Input Take(std::size_t count) {
    const Input taken = m_rest.first(std::min(count, m_rest.size()));
    m_rest = m_rest.subspan(taken.size());
    return taken;
  }
  /// Up to a zero, which goes with it.
  Input TakeText() {
    const Input text = Take(static_cast<std::size_t>(std::ranges::find(m_rest, 0) - m_rest.begin()));
    Take(1);
    return text;
  }
  Input Rest() const { return m_rest; }

 private:
  Input m_rest;
};

ByteString TrackOf(Reader& input) {
  const Input codec = input.TakeText();
  const char kind = codec.empty() ? 'S' : static_cast<char>(codec[0]);
  const std::uint64_t type = kind == 'V' ? 1 : kind == 'A' ? 2 : 17;
  const ByteString width = Unsigned(id::kPixelWidth, input.Number(4));
  const ByteString height = Unsigned(id::kPixelHeight, input.Number(4));
  const ByteString rate = Float(id::kSamplingFrequency, static_cast<double>(input.Number(6)));
  const ByteString channels = Unsigned(id::kChannels, input.Number(3));
  const ByteString duration = Unsigned(id::kDefaultDuration, input.Number(8));
  return TrackEntry(
      1, type, {reinterpret_cast<const char*>(codec.data()), codec.size()},
      Join({duration, Element(id::kVideo, Join({width, height})), Element(id::kAudio, Join({rate, channels})),
            Element(id::kCodecPrivate, Copied(input.Take(input.Number(2))))}));
}

}  // namespace

void FuzzIndex(Input file) {
  Scan(Copied(file), [](CEbmlScanner& scanner) {
    scanner.SetSearchReach({.smallestFile = 6, .firstChunk = 256, .chunk = 1024, .closest = 256});
    for (const std::uint64_t time : {scanner.Duration() / 2 + 1, std::uint64_t{10000000}}) {
      scanner.SetStartTime(time);
      scanner.Process();
    }
    scanner.BuildIndex();
    for (const std::uint64_t time : {std::uint64_t{0}, std::uint64_t{1}, scanner.Duration(), ~std::uint64_t{0}}) {
      const std::int32_t entry = FindIndexEntry(scanner.Index(), time, scanner.Duration());
      if (entry != 0 && static_cast<std::size_t>(entry) >= scanner.Index().size()) __builtin_trap();
    }
  });
}

void FuzzDeliver(Input file) { Scan(Copied(file), ScanWhole); }

void FuzzTrack(Input trackAndFrame) {
  Reader input(trackAndFrame);
  const ByteString tracks = Element(id::kTracks, TrackOf(input));
  const ByteString frame = SimpleBlock(1, 0, Copied(input.Rest()));
  Scan(MatroskaFile(Join({Element(id::kInfo, {}), tracks, Cluster(0, frame)})), ScanWhole);
}

}  // namespace tarvex::fuzz
