#include "host/play_report.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text_table.h"
#include "host/time_text.h"

namespace tarvex::host {

namespace {

// A media type's details matter to `info`; here its name is enough.
std::string WithoutDetails(const std::string& mediaType) { return mediaType.substr(0, mediaType.find(':')); }

std::string BitRate(const PlayedStream& stream) {
  if (stream.span <= 0) return "-";
  const double seconds = static_cast<double>(stream.span) / 1e7;
  return fmt::format("{:.0f} kbit/s", static_cast<double>(stream.bytes) * 8 / 1000 / seconds);
}

}  // namespace

std::string ProgressText(const PlayProgress& progress) {
  std::string text = TimeText(progress.position);
  if (progress.duration && *progress.duration > 0) {
    const double part = static_cast<double>(progress.position) / static_cast<double>(*progress.duration);
    text += fmt::format(" / {}  {:.0f} %", TimeText(*progress.duration), std::clamp(part, 0.0, 1.0) * 100);
  }
  double bytes = 0;
  for (const PlayedStream& stream : progress.streams) {
    text += fmt::format("  {} {}", stream.kind, stream.samples);
    bytes += static_cast<double>(stream.bytes);
  }
  if (progress.seconds > 0) text += fmt::format("  {:.2f} MB/s", bytes / 1e6 / progress.seconds);
  return text;
}

std::string SummaryText(const std::vector<PlayedStream>& streams) {
  CTextTable table({"pin", "media type", "rendered by", ">samples", ">bytes", ">rate"});
  for (const PlayedStream& stream : streams) {
    table.AddRow({stream.pin, WithoutDetails(stream.mediaType), stream.renderer, std::to_string(stream.samples),
                  std::to_string(stream.bytes), BitRate(stream)});
  }
  return table.Text();
}

}  // namespace tarvex::host
