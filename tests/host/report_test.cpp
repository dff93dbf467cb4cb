// Reports of what no kept file holds: hostile texts, and values that are absent or without measure.
#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/report/dump_report.h"
#include "host/report/info_report.h"
#include "host/report/play_report.h"
#include "host/system/text_escape.h"

namespace tarvex::host {
namespace {

using nlohmann::json;

InfoReport ReportOf(const std::string& name) {
  InfoReport report;
  report.file = report.docType = name;
  report.streams = {{2, name, true, true}, {2, "other", false, false}};
  report.pins = {{name, 0, {}}, {"Audio 0", std::nullopt, {}}};
  report.chapters = {{name, std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()},
                     {"last", 0, 0}};
  report.markers.push_back({name, std::numeric_limits<double>::infinity()});
  return report;
}

bool IsHarmless(std::string text, std::ptrdiff_t lines) {
  const bool asMany = std::count(text.begin(), text.end(), '\n') == lines;
  std::erase(text, '\n');
  return asMany && EscapeForTerminal(text) == text;
}

bool IsPlainAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); });
}

TEST(EveryReport, ShowsNothingThatATerminalObeys) {
  std::string name = "\x1B]0;title\a\xC2\x9B\xE2\x80\xAE";
  for (int byte = 0; byte < 256; ++byte) name += static_cast<char>(byte);
  EXPECT_TRUE(IsHarmless(InfoTable(ReportOf(name)), 18));
  EXPECT_TRUE(IsHarmless(SummaryText({{name, name, name, name, name, name}}, 1), 4));
  EXPECT_TRUE(IsHarmless(ChoiceText("audio", 1, name), 0));
  EXPECT_TRUE(IsHarmless(PinTextLine({1, name, 3, {}}), 1));
  EXPECT_TRUE(IsPlainAscii(PinJsonLine({1, name, 3, {}})));
}

TEST(EveryReport, LongNamesAreShortenedForPeopleOnly) {
  const std::string name(1000000, 'x');
  EXPECT_LT(InfoTable(ReportOf(name)).size(), 10000 + name.size() * 2);
  EXPECT_LT(SummaryText({{name, name, name, name, name, name}}, 1).size(), 20000U);
  EXPECT_LT(ChoiceText("chapter", 1, name).size(), 600U);
  EXPECT_EQ(json::parse(InfoJson(ReportOf(name)))["streams"][0]["name"], name);
}

TEST(InfoJson, IsValidWhateverTheTextsAre) {
  const std::string name = "a\"b\\\x1B[31m\nline \xE2\x80\xAE";
  const std::string text = InfoJson(ReportOf(name + "\xFF"));
  EXPECT_TRUE(IsPlainAscii(text)) << text;
  const json parsed = json::parse(text);
  EXPECT_EQ(parsed["file"], name + "\xEF\xBF\xBD");
  EXPECT_EQ(parsed["streams"][1]["number"], 2);
  for (const json& absent : {parsed["duration"], parsed["seek_capabilities"], parsed["pins"][1]["stream"]}) {
    EXPECT_TRUE(absent.is_null());
  }
}

TEST(InfoTable, AChapterMayHaveNoEndAndNoMarker) {
  const std::string text = InfoTable(ReportOf("x"));
  const std::size_t line = text.rfind("\n", text.size() - 2);
  std::istringstream words(text.substr(line));
  const std::vector<std::string> cells{std::istream_iterator<std::string>(words), {}};
  EXPECT_EQ(cells, (std::vector<std::string>{"2", "0:00:00.000", "-", "-", "last"})) << text;
}

TEST(DumpReport, SampleWithoutTimesButWithEveryFlag) {
  const DumpPin pin{1, "Audio", 3, {}};
  DumpEvent event;
  event.size = 7;
  event.sha1 = "ab";
  event.sync = event.discontinuity = event.preroll = event.typeChange = true;
  EXPECT_TRUE(json::parse(EventJsonLine(pin, event, 4))["start"].is_null());
  EXPECT_EQ(EventTextLine(pin, event, 4), "1   sample         4            -                    - KDPT         7 ab\n");
}

TEST(PlayReport, TableFitsATerminal) {
  const std::string name = "S: " + std::string(60, 'n') + " [English]";
  const PlayedStream counted{"Subtitle 10 (lang:eng)", "subtitle", name,          "Subtitle ASS", "",
                             "no decoder takes it",    123456,     1'234'567'890, 20'000'000};
  const PlayedStream rendered{"Audio 0", "audio", name, "Audio AAC", "A > B", "", 1, 2, 3};
  const std::string text = SummaryText({counted, rendered}, 4);
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 100U) << line;
  EXPECT_NE(text.find("...  Subtitle ASS   123456  1234567890  4938272 kbit/s\n"), std::string::npos) << text;
}

}  // namespace
}  // namespace tarvex::host
