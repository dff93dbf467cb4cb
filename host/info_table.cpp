// The form of an InfoReport for people.
#include <fmt/format.h>

#include "host/info_report.h"
#include "host/text_escape.h"
#include "host/text_table.h"
#include "host/time_text.h"

namespace tarvex::host {

namespace {

std::string PinsTable(const InfoReport& report) {
  CTextTable table({">pin", "name", ">stream", "media type"});
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

std::string StreamsTable(const InfoReport& report) {
  CTextTable table({">stream", "group", "enabled", "name"});
  for (std::size_t i = 0; i < report.streams.size(); ++i) {
    const StreamReport& stream = report.streams[i];
    table.AddRow({std::to_string(i), GroupName(stream.group), stream.enabled ? "yes" : "no", stream.name});
  }
  return table.Text();
}

std::string ChaptersTable(const InfoReport& report) {
  CTextTable table({">chapter", ">start", ">end", "name"});
  for (std::size_t i = 0; i < report.chapters.size(); ++i) {
    const ChapterReport& chapter = report.chapters[i];
    table.AddRow(
        {std::to_string(i + 1), TimeText(chapter.start), chapter.end == 0 ? "-" : TimeText(chapter.end), chapter.name});
  }
  return table.Text();
}

}  // namespace

std::string GroupName(std::uint32_t group) {
  switch (group) {
    case 1:
      return "video";
    case 2:
      return "audio";
    case 17:
      return "subtitle";
    default:
      return std::to_string(group);
  }
}

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
