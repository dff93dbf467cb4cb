// The reports of the commands: JSON that every reader takes, whatever the file's texts are, and lines
// that say what is absent.
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/report/checksum.h"
#include "host/report/dump_report.h"
#include "host/report/info_report.h"
#include "host/report/play_report.h"
#include "host/system/text_escape.h"

namespace tarvex::host {
namespace {

using nlohmann::json;

InfoReport NastyReport() {
  InfoReport report;
  report.file = "a\"b\\\x1B[31m\xFF.mkv";
  report.docType = "webm";
  report.streams.push_back({2, "line\nbreak \xE2\x80\xAE", true, true});
  report.streams.push_back({2, "other", false, false});
  report.chapters.push_back({"\xC2\x9B", -5, 0});
  report.pins.push_back({"Audio 0", std::nullopt, {}});
  return report;
}

bool IsPlainAscii(const std::string& text) {
  return text.find_first_not_of("\n -~") == std::string::npos ||
         std::all_of(text.begin(), text.end(), [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); });
}

TEST(InfoJson, HostileTextsLeaveItValidAndHarmless) {
  const std::string text = InfoJson(NastyReport());
  EXPECT_TRUE(IsPlainAscii(text)) << text;
  const json parsed = json::parse(text);
  EXPECT_EQ(parsed["file"], "a\"b\\\x1B[31m\xEF\xBF\xBD.mkv");
  EXPECT_EQ(parsed["streams"][0]["name"], "line\nbreak \xE2\x80\xAE");
  EXPECT_EQ(parsed["streams"][1]["number"], 2);
  EXPECT_EQ(parsed["chapters"][0]["start"], -5);
}

TEST(InfoJson, AbsentValuesAreNull) {
  const json parsed = json::parse(InfoJson(NastyReport()));
  EXPECT_TRUE(parsed["duration"].is_null());
  EXPECT_TRUE(parsed["seek_capabilities"].is_null());
  EXPECT_TRUE(parsed["pins"][0]["stream"].is_null());
}

TEST(InfoTable, HostileTextsStayOnTheirLine) {
  const std::string text = InfoTable(NastyReport());
  EXPECT_EQ(text.find('\x1B'), std::string::npos);
  EXPECT_EQ(text.find("\xC2\x9B"), std::string::npos);
  EXPECT_NE(text.find("line\\nbreak \\u{202E}\n"), std::string::npos) << text;
  EXPECT_NE(text.find("duration  unknown\n"), std::string::npos) << text;
}

// Escape sequences and lines, in every byte that a file may hold.
std::string EveryByte() {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  return "\x1B]0;title\a\xC2\x9B\xE2\x80\xAE" + all;
}

std::string WithoutLineFeeds(std::string text) {
  std::erase(text, '\n');
  return text;
}

bool IsHarmlessLines(const std::string& text, std::ptrdiff_t lines) {
  return std::count(text.begin(), text.end(), '\n') == lines &&
         EscapeForTerminal(WithoutLineFeeds(text)) == WithoutLineFeeds(text);
}

InfoReport ReportOf(const std::string& name) {
  InfoReport report;
  report.file = report.docType = name;
  report.streams.push_back({2, name, true, true});
  report.pins.push_back({name, 0, {}});
  report.chapters.push_back({name, std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()});
  report.markers.push_back({name, std::numeric_limits<double>::infinity()});
  return report;
}

TEST(EveryReport, ShowsNothingThatATerminalObeys) {
  const std::string name = EveryByte();
  EXPECT_TRUE(IsHarmlessLines(InfoTable(ReportOf(name)), 15));
  EXPECT_TRUE(IsHarmlessLines(SummaryText({{name, name, name, name, name, name}}, 1), 4));
  EXPECT_TRUE(IsHarmlessLines(ChoiceText("audio", 1, name), 0));
  EXPECT_TRUE(IsHarmlessLines(PinTextLine({1, name, 3, {}}), 1));
  const std::string object = InfoJson(ReportOf(name));
  EXPECT_TRUE(IsPlainAscii(object));
  EXPECT_FALSE(json::parse(object).is_discarded());
  EXPECT_TRUE(IsPlainAscii(PinJsonLine({1, name, 3, {}})));
}

TEST(EveryReport, LongNamesAreShortenedForPeopleOnly) {
  const std::string name(1000000, 'x');
  EXPECT_LT(InfoTable(ReportOf(name)).size(), 10000 + name.size() * 2);
  EXPECT_LT(SummaryText({{name, name, name, name, name, name}}, 1).size(), 20000U);
  EXPECT_LT(ChoiceText("chapter", 1, name).size(), 600U);
  EXPECT_EQ(json::parse(InfoJson(ReportOf(name)))["streams"][0]["name"], name);
}

TEST(DumpReport, SampleWithoutTimesSaysSo) {
  const DumpPin pin{1, "Audio", 3, {}};
  DumpEvent event;
  event.size = 7;
  event.sha1 = "ab";
  event.sync = true;
  const json parsed = json::parse(EventJsonLine(pin, event, 4));
  EXPECT_TRUE(parsed["start"].is_null());
  EXPECT_EQ(parsed["number"], 4);
  EXPECT_EQ(parsed["stream"], 3);
  EXPECT_EQ(EventTextLine(pin, event, 4), "1   sample         4            -                    - K            7 ab\n");
}

TEST(DumpReport, EveryFlagHasItsLetter) {
  DumpEvent event;
  event.sync = event.discontinuity = event.preroll = event.typeChange = true;
  EXPECT_NE(EventTextLine({}, event, 0).find(" KDPT "), std::string::npos);
}

TEST(PlayReport, UnknownDurationHasNoPercentage) {
  PlayProgress progress;
  progress.position = 12'000'000;
  progress.streams.push_back({"Video 0", "video", "", "", "", "", 30, 2'000'000, 0});
  EXPECT_EQ(ProgressText(progress), "0:00:01.200  video 30");
  progress.duration = 48'000'000;
  progress.seconds = 2;
  EXPECT_EQ(ProgressText(progress), "0:00:01.200 / 0:00:04.800  25 %  video 30  1.00 MB/s");
}

TEST(PlayReport, StreamsAreRatedByTheFileAndTheTotalByTheWall) {
  const PlayedStream stream{"Audio 0", "audio", "A: x", "Audio AAC (WAVE): details", "x", "", 2, 1'000'000, 20'000'000};
  EXPECT_EQ(SummaryText({stream, stream}, 4),
            "  pin      stream  media type  samples    bytes         rate\n"
            "  Audio 0  A: x    Audio AAC         2  1000000  4000 kbit/s\n"
            "  Audio 0  A: x    Audio AAC         2  1000000  4000 kbit/s\n"
            "  total                              4  2000000    0.50 MB/s\n"
            "  Audio 0: x\n"
            "  Audio 0: x\n");
}

TEST(PlayReport, TableFitsATerminalAndWaysStandBelow) {
  const std::string name = "S: " + std::string(60, 'n') + " [English]";
  const PlayedStream counted{"Subtitle 10 (lang:eng)", "subtitle", name,          "Subtitle ASS", "",
                             "no decoder takes it",    123456,     1'234'567'890, 20'000'000};
  const PlayedStream rendered{"Audio 0", "audio", name, "Audio AAC", "A > B", "", 1, 2, 3};
  const std::string text = SummaryText({counted, rendered}, 4);
  std::istringstream lines(text);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) EXPECT_LE(line.size(), 100U) << line;
  EXPECT_EQ(count, 6) << text;
  EXPECT_NE(text.find("...  Subtitle ASS   123456  1234567890"), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with("\n  Subtitle 10 (lang:eng): counted, no decoder takes it\n  Audio 0: A > B\n")) << text;
}

TEST(Checksum, KnownDigests) {
  const std::uint8_t abc[] = {'a', 'b', 'c'};
  EXPECT_EQ(Sha1Text(abc), "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_EQ(Sha1Text({}), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

}  // namespace
}  // namespace tarvex::host
