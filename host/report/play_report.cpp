#include "host/report/play_report.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/report/text_table.h"
#include "host/report/time_text.h"
#include "host/system/text_escape.h"

namespace tarvex::host {

namespace {

// A media type's details matter to `info`; here its name is enough.
std::string NameOf(const std::string& mediaType) {
  return mediaType.substr(0, std::min(mediaType.find(':'), mediaType.find(" (")));
}

// Where the stream went. Names of filters are long, so they are no column.
std::string WayOf(const PlayedStream& stream) {
  const std::string pin = EscapeAndShorten(stream.pin);
  if (stream.renderer.empty()) return fmt::format("  {}: counted, {}\n", pin, EscapeAndShorten(stream.reason));
  return fmt::format("  {}: {}\n", pin, EscapeAndShorten(stream.renderer));
}

std::string BitRate(const PlayedStream& stream) {
  if (stream.span <= 0) return "-";
  const double seconds = static_cast<double>(stream.span) / 1e7;
  return fmt::format("{:.0f} kbit/s", static_cast<double>(stream.bytes) * 8 / 1000 / seconds);
}

std::uint64_t BytesOf(const std::vector<PlayedStream>& streams) {
  std::uint64_t bytes = 0;
  for (const PlayedStream& stream : streams) bytes += stream.bytes;
  return bytes;
}

std::string ReadRate(std::uint64_t bytes, double seconds) {
  return fmt::format("{:.2f} MB/s", static_cast<double>(bytes) / 1e6 / seconds);
}

}  // namespace

std::string ProgressText(const PlayProgress& progress) {
  std::string text = TimeText(progress.position);
  if (progress.duration && *progress.duration > 0) {
    const double part = static_cast<double>(progress.position) / static_cast<double>(*progress.duration);
    text += fmt::format(" / {}  {:.0f} %", TimeText(*progress.duration), std::clamp(part, 0.0, 1.0) * 100);
  }
  if (progress.paused) text += "  paused";
  for (const PlayedStream& stream : progress.streams) text += fmt::format("  {} {}", stream.kind, stream.samples);
  if (progress.seconds > 0) text += "  " + ReadRate(BytesOf(progress.streams), progress.seconds);
  return text;
}

std::string ChoiceText(const std::string& kind, std::size_t number, const std::string& name) {
  return fmt::format("{} {}: {}", kind, number, EscapeAndShorten(name));
}

std::string SummaryText(const std::vector<PlayedStream>& streams, double seconds) {
  constexpr std::size_t kWidth = 100;
  TextTable table({"pin", "stream", "media type", ">samples", ">bytes", ">rate"});
  std::string ways;
  std::uint64_t samples = 0;
  for (const PlayedStream& stream : streams) {
    table.AddRow({stream.pin, stream.stream, NameOf(stream.mediaType), std::to_string(stream.samples),
                  std::to_string(stream.bytes), BitRate(stream)});
    ways += WayOf(stream);
    samples += stream.samples;
  }
  const std::uint64_t bytes = BytesOf(streams);
  table.AddRow(
      {"total", "", "", std::to_string(samples), std::to_string(bytes), seconds > 0 ? ReadRate(bytes, seconds) : "-"});
  return table.Text(kWidth) + ways;
}

}  // namespace tarvex::host
