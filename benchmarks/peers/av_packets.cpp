// Reads every packet of a file with libavformat, touches two bytes of each, and prints what that took, as
// bench_play does: one JSON object. Without stream analysis, which a splitter does not do either.
#include <sys/resource.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>

extern "C" {
#include <libavcodec/packet.h>
#include <libavformat/avformat.h>
}

namespace {

struct CloseInput {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct FreePacket {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Input = std::unique_ptr<AVFormatContext, CloseInput>;
using Packet = std::unique_ptr<AVPacket, FreePacket>;

struct Counts {
  std::uint64_t samples = 0;
  std::uint64_t bytes = 0;
  unsigned touched = 0;
};

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

Input Open(const char* path) {
  AVFormatContext* context = nullptr;
  const int result = avformat_open_input(&context, path, nullptr, nullptr);
  return Input(result == 0 ? context : nullptr);
}

Counts ReadAll(AVFormatContext& context, AVPacket& packet) {
  Counts counts;
  while (av_read_frame(&context, &packet) == 0) {
    ++counts.samples;
    if (packet.size > 0) counts.touched += packet.data[0] + packet.data[packet.size - 1];
    counts.bytes += static_cast<std::uint64_t>(packet.size);
    av_packet_unref(&packet);
  }
  return counts;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: av_packets FILE\n");
    return 2;
  }
  rusage before{};
  rusage after{};
  getrusage(RUSAGE_SELF, &before);
  const auto start = std::chrono::steady_clock::now();
  const Input input = Open(argv[1]);
  const Packet packet(av_packet_alloc());
  if (!input || !packet) {
    std::fprintf(stderr, "av_packets: cannot open %s\n", argv[1]);
    return 1;
  }
  const Counts counts = ReadAll(*input, *packet);
  const double wall = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  getrusage(RUSAGE_SELF, &after);
  std::printf(R"({"wall_ms":%.3f,"user_ms":%.3f,"system_ms":%.3f,"peak_bytes":%ld,"samples":%ju,"bytes":%ju,"mark":%u})"
              "\n",
              wall, Milliseconds(after.ru_utime) - Milliseconds(before.ru_utime),
              Milliseconds(after.ru_stime) - Milliseconds(before.ru_stime), after.ru_maxrss * 1024,
              static_cast<std::uintmax_t>(counts.samples), static_cast<std::uintmax_t>(counts.bytes), counts.touched);
  return 0;
}
