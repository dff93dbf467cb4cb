// The form of an InfoReport for people.
#include <fmt/format.h>

#include "host/report/info_report.h"
#include "host/report/stream_choice.h"
#include "host/report/text_table.h"
#include "host/report/time_text.h"
#include "host/system/text_escape.h"

namespace tarvex::host {

namespace {

std::string PinsTable(const InfoReport& report) {
  TextTable table({">pin", "name", ">stream", "media type"});
  for (std::size_t i = 0; i < report.pins.size(); ++i) {
    const PinReport& pin = report.pins[i];
    std::string type = pin.mediaTypes.empty() ? "none" : MediaTypeLine(pin.mediaTypes.front());
    table.AddRow({std::to_string(i), pin.name, pin.stream ? std::to_string(*pin.stream) : "-", type});
    for (std::size_t k = 1; k < pin.mediaTypes.size(); ++k) {
      table.AddRow({"", "", "", MediaTypeLine(pin.mediaTypes[k])});
    }
  }
  return table.Text();
}

std::string FlagsText(const StreamReport& stream) {
  if (stream.exclusive) return "exclusive";
  return stream.enabled ? "enabled" : "-";
}

std::string StreamsTable(const InfoReport& report) {
  TextTable table({">stream", "group", ">number", "flags", "name"});
  for (std::uint32_t i = 0; i < report.streams.size(); ++i) {
    const StreamReport& stream = report.streams[i];
    table.AddRow({std::to_string(i), GroupName(stream.group), std::to_string(NumberInGroup(report.streams, i)),
                  FlagsText(stream), stream.name});
  }
  return table.Text();
}

// Where a jump to the chapter leads: markers have whole seconds.
std::string MarkerText(const InfoReport& report, std::size_t index) {
  return index < report.markers.size() ? TimeText(TimeOf(report.markers[index])) : "-";
}

std::string ChaptersTable(const InfoReport& report) {
  TextTable table({">chapter", ">start", ">end", ">marker", "name"});
  for (std::size_t i = 0; i < report.chapters.size(); ++i) {
    const ChapterReport& chapter = report.chapters[i];
    table.AddRow({std::to_string(i + 1), TimeText(chapter.start), chapter.end == 0 ? "-" : TimeText(chapter.end),
                  MarkerText(report, i), chapter.name});
  }
  return table.Text();
}

}  // namespace

std::string InfoTable(const InfoReport& report) {
  std::string text =
      fmt::format("file      {}\ndocument  {}\nduration  {}\n", EscapeForTerminal(report.file),
                  EscapeForTerminal(report.docType), report.duration ? TimeText(*report.duration) : "unknown");
  text += "\npins" + std::string(report.pins.empty() ? ": none\n" : "\n" + PinsTable(report));
  text += "\nstreams" + std::string(report.streams.empty() ? ": none\n" : "\n" + StreamsTable(report));
  text += "\nchapters" + std::string(report.chapters.empty() ? ": none\n" : "\n" + ChaptersTable(report));
  return text;
}

}  // namespace tarvex::host
