// What goes to the terminal and what comes from the command line: escaping, file names, times.
#include <gtest/gtest.h>

#include "host/report/text_table.h"
#include "host/report/time_text.h"
#include "host/system/file_name_text.h"
#include "host/system/text_escape.h"

namespace tarvex::host {
namespace {

TEST(TextEscape, TerminalCommandsAreShownNotObeyed) {
  EXPECT_EQ(EscapeForTerminal("\x1B]0;title\a"), "\\x1B]0;title\\x07");
  EXPECT_EQ(EscapeForTerminal("a\r\nb\t"), "a\\r\\nb\\t");
  EXPECT_EQ(EscapeForTerminal("\xC2\x9B"
                              "31m"),
            "\\u{009B}31m");  // the eight-bit form of ESC [
  EXPECT_EQ(EscapeForTerminal(std::string_view("\0", 1)), "\\x00");
}

TEST(TextEscape, WritingDirectionCannotBeTurned) {
  EXPECT_EQ(EscapeForTerminal("a\xE2\x80\xAE"
                              "gpj.exe"),
            "a\\u{202E}gpj.exe");
  EXPECT_EQ(EscapeForTerminal("\xE2\x80\xA8"), "\\u{2028}");
  EXPECT_EQ(EscapeForTerminal("\xD8\x9C"), "\\u{061C}");
}

TEST(TextEscape, OrdinaryTextIsLeftAlone) {
  const std::string text = "Z:\\film\\日本語 ünï 🎬.mkv";
  EXPECT_EQ(EscapeForTerminal(text), text);
}

TEST(TextEscape, EveryByteThatIsNoUtf8IsShown) {
  EXPECT_EQ(EscapeForTerminal("a\xFFz"), "a\\xFFz");
  EXPECT_EQ(EscapeForTerminal("\xE6\x97"), "\\xE6\\x97");           // cut short
  EXPECT_EQ(EscapeForTerminal("\xC0\x8A"), "\\xC0\\x8A");           // an overlong line feed
  EXPECT_EQ(EscapeForTerminal("\xED\xA0\x80"), "\\xED\\xA0\\x80");  // a surrogate
  EXPECT_EQ(EscapeForTerminal("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");
}

TEST(TextEscape, LongTextIsCutBetweenCharacters) {
  std::string text;
  for (int k = 0; k < 500; ++k) text += "ü";
  EXPECT_EQ(EscapeAndShorten(text), text);
  const std::string shortened = EscapeAndShorten(text + "\xFF");
  EXPECT_EQ(CharacterCount(shortened), 500U);
  EXPECT_TRUE(shortened.ends_with("üü...")) << shortened;
}

TEST(FileNameText, LoneSurrogatesSurvive) {
  WideString name = OLESTR("a");
  name += static_cast<OLECHAR>(0xD83C);
  name += OLESTR("b");
  name += static_cast<OLECHAR>(0xDFAC);
  EXPECT_EQ(WideFileName(NarrowFileName(name)), name);
}

TEST(FileNameText, ProperNamesBecomeUtf8) {
  EXPECT_EQ(NarrowFileName(OLESTR("ü日🎬")), "ü日🎬");
  EXPECT_EQ(WideFileName("ü日🎬"), OLESTR("ü日🎬"));
}

TEST(TimeText, IsCutToMilliseconds) {
  EXPECT_EQ(TimeText(0), "0:00:00.000");
  EXPECT_EQ(TimeText(9999), "0:00:00.000");
  EXPECT_EQ(TimeText(36'610'019'999), "1:01:01.001");
  EXPECT_EQ(TimeText(3'600'000'000'000), "100:00:00.000");
  EXPECT_EQ(TimeText(-1'000'000), "-0:00:00.100");
}

TEST(TimeText, BothEndsOfTheRangeHaveAText) {
  EXPECT_EQ(TimeText(kOpenTime), "open");
  EXPECT_EQ(TimeText(-kOpenTime - 1), "-256204778:48:05.477");
}

TEST(TimeText, BothFormsAreRead) {
  const std::pair<const char*, std::int64_t> times[] = {{"0", 0},
                                                        {"90", 900'000'000},
                                                        {"90.5", 905'000'000},
                                                        {"0:01:30.500", 905'000'000},
                                                        {"1:00:00", 36'000'000'000},
                                                        {"99999999:59:59.9999999", 3'599'999'999'999'999'999}};
  for (const auto& [text, time] : times) EXPECT_EQ(ParseTime(text), time) << text;
  EXPECT_EQ(ParseTime(TimeText(36'610'010'000)), 36'610'010'000);
}

TEST(TimeText, OtherTextIsNoTime) {
  for (const char* text : {"", "soon", "-1", "+1", "1e3", "1.", ".5", "1.12345678", "1:30", "0:60:00", "0:00:60",
                           "0:1:30", ":01:30", "0:01:30:00", "999999999", "1 ", "0x10", "nan"}) {
    EXPECT_EQ(ParseTime(text), std::nullopt) << text;
  }
}

TEST(TextTable, ColumnsAlignByCharactersNotBytes) {
  TextTable table({"name", ">n"});
  table.AddRow({"üü", "1"});
  table.AddRow({"a\n", "10"});
  EXPECT_EQ(table.Text(), "  name   n\n  üü     1\n  a\\n   10\n");
}

}  // namespace
}  // namespace tarvex::host
