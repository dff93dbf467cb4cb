// What goes to the terminal and what comes from the command line: escaping, file names, times.
#include <gtest/gtest.h>

#include "host/report/text_table.h"
#include "host/report/time_text.h"
#include "host/system/file_name_text.h"
#include "host/system/text_escape.h"

namespace tarvex::host {
namespace {

TEST(TextEscape, WhatATerminalObeysIsShown) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"\x1B]0;title\a", "\\x1B]0;title\\x07"},
      {"a\r\nb\t", "a\\r\\nb\\t"},
      {"\xC2\x9B"
       "31m",
       "\\u{009B}31m"},  // the eight-bit form of ESC [
      {{"\0", 1}, "\\x00"},
      {"a\xE2\x80\xAE"
       "gpj.exe",
       "a\\u{202E}gpj.exe"},  // turns the writing direction
      {"\xE2\x80\xA8\xD8\x9C\xEF\xBB\xBF", "\\u{2028}\\u{061C}\\u{FEFF}"},
      {"a\xFFz", "a\\xFFz"},
      {"\xE6\x97", "\\xE6\\x97"},           // cut short
      {"\xC0\x8A", "\\xC0\\x8A"},           // an overlong line feed
      {"\xED\xA0\x80", "\\xED\\xA0\\x80"},  // a surrogate
      {"\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"},
      {"Z:\\film\\日本語 ünï 🎬.mkv", "Z:\\film\\日本語 ünï 🎬.mkv"},
  };
  for (const auto& [text, shown] : cases) EXPECT_EQ(EscapeForTerminal(text), shown);
}

TEST(TextEscape, LongTextIsCutBetweenCharacters) {
  std::string text;
  for (int k = 0; k < 500; ++k) text += "ü";
  EXPECT_EQ(EscapeAndShorten(text), text);
  const std::string shortened = EscapeAndShorten(text + "\xFF");
  EXPECT_EQ(CharacterCount(shortened), 500U);
  EXPECT_TRUE(shortened.ends_with("üü...")) << shortened;
}

TEST(FileNameText, EveryNameSurvives) {
  EXPECT_EQ(NarrowFileName(OLESTR("ü日🎬")), "ü日🎬");
  const OLECHAR loneSurrogates[] = {'a', 0xD83C, 'b', 0xDFAC};
  for (const WideString& name :
       {WideString(OLESTR("ü日🎬")), WideString(std::begin(loneSurrogates), std::end(loneSurrogates))}) {
    EXPECT_EQ(WideFileName(NarrowFileName(name)), name);
  }
}

TEST(TimeText, IsCutToMilliseconds) {
  const std::pair<std::int64_t, const char*> times[] = {{9999, "0:00:00.000"},
                                                        {36'610'019'999, "1:01:01.001"},
                                                        {3'600'000'000'000, "100:00:00.000"},
                                                        {-1'000'000, "-0:00:00.100"},
                                                        {kOpenTime, "open"},
                                                        {-kOpenTime - 1, "-256204778:48:05.477"}};
  for (const auto& [time, text] : times) EXPECT_EQ(TimeText(time), text);
}

TEST(TimeText, BothFormsAreReadAndNothingElse) {
  const std::pair<const char*, std::int64_t> times[] = {{"0", 0},
                                                        {"90", 900'000'000},
                                                        {"90.5", 905'000'000},
                                                        {"0:01:30.500", 905'000'000},
                                                        {"1:00:00", 36'000'000'000},
                                                        {"99999999:59:59.9999999", 3'599'999'999'999'999'999}};
  for (const auto& [text, time] : times) EXPECT_EQ(ParseTime(text), time) << text;
  for (const char* text : {"", "soon", "-1", "+1", "1e3", "1.", ".5", "1.12345678", "1:30", "0:60:00", "0:00:60",
                           "0:1:30", ":01:30", "0:01:30:00", "999999999", "1 ", "0x10", "nan"}) {
    EXPECT_EQ(ParseTime(text), std::nullopt) << text;
  }
}

TEST(TextTable, ColumnsAlignByCharactersNotBytes) {
  TextTable table({"name", ">n"});
  table.AddRow({"üüü", "1"});
  table.AddRow({"a\n", "10"});
  EXPECT_EQ(table.Text(), "  name   n\n  üüü    1\n  a\\n   10\n");
}

}  // namespace
}  // namespace tarvex::host
