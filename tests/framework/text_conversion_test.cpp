// Conversions between narrow and wide text.
#include "framework/text_conversion.h"

#include <gtest/gtest.h>

#include "framework/bstr.h"

namespace tarvex::test {
namespace {

TEST(TextConversion, Utf8GoesThereAndBack) {
  const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xAC";
  const WideString wide = WideFromUtf8(text);
  EXPECT_EQ(wide, OLESTR("a\u00E9\u20AC\U0001F3AC"));
  EXPECT_EQ(wide.size(), 5u);
  EXPECT_EQ(Utf8FromWide(wide), text);
}

TEST(TextConversion, IllFormedUtf8IsReplacedByteByByte) {
  const auto replaced = [](std::size_t count) { return WideString(count, OLECHAR{0xFFFD}); };
  EXPECT_EQ(WideFromUtf8("\xFF"), replaced(1));
  EXPECT_EQ(WideFromUtf8("\xC0\x80"), replaced(2));          // overlong
  EXPECT_EQ(WideFromUtf8("\xED\xA0\x80"), replaced(3));      // surrogate
  EXPECT_EQ(WideFromUtf8("\xF4\x90\x80\x80"), replaced(4));  // beyond Unicode
  EXPECT_EQ(WideFromUtf8("\xE2\x82"), replaced(2));          // cut off
  EXPECT_EQ(WideFromUtf8("\xE2"
                         "a"),
            WideString(1, OLECHAR{0xFFFD}) + OLESTR("a"));
}

TEST(TextConversion, LoneSurrogateIsReplaced) {
  EXPECT_EQ(Utf8FromWide(WideString(1, OLECHAR{0xD800})), "\xEF\xBF\xBD");
}

TEST(TextConversion, ThreadCodePageKeepsWesternLetters) {
  EXPECT_EQ(WideFromThreadCodePage("fran\xE7"
                                   "ais \x80"),
            OLESTR("fran\u00E7ais \u20AC"));
}

TEST(TextConversion, UserLanguageCanBeSetForTests) {
  OverrideUserLanguageForTests("German");
  EXPECT_EQ(UserLanguageEnglishName(), "German");
  OverrideUserLanguageForTests(nullptr);
  EXPECT_FALSE(UserLanguageEnglishName().empty());
}

TEST(BStrOwner, CopiesAreIndependentAndEmptyIsNotNull) {
  const BStr empty{WideView()};
  EXPECT_NE(empty.Get(), nullptr);
  EXPECT_TRUE(empty.View().empty());
  BStr first(WideString(OLESTR("a\0b"), 3));
  const BStr second(first);
  first = BStr();
  EXPECT_EQ(second.View(), WideString(OLESTR("a\0b"), 3));
}

}  // namespace
}  // namespace tarvex::test
