// Conversions between narrow and wide text, of what a file may hold instead of text too.
#include "framework/text_conversion.h"

#include <gtest/gtest.h>

namespace tarvex::test {
namespace {

TEST(TextConversion, Utf8GoesThereAndBack) {
  const std::string text = "a\xC3\xA9\xE2\x82\xAC\xEF\xBF\xBF\xF0\x90\x80\x80";
  const WideString wide = WideFromUtf8(text);
  EXPECT_EQ(wide.size(), 6u);
  EXPECT_EQ(wide, OLESTR("a\u00E9\u20AC\uFFFF\U00010000"));
  EXPECT_EQ(Utf8FromWide(wide), text);
  EXPECT_EQ(Utf8FromWide(WideString(1, OLECHAR{0xD800})), "\xEF\xBF\xBD") << "half of a pair";
}

TEST(TextConversion, IllFormedUtf8IsReplacedByteByByte) {
  const std::pair<const char*, std::size_t> cases[] = {
      {"\xFF", 1}, {"\xC0\x80", 2}, {"\xED\xA0\x80", 3}, {"\xF4\x90\x80\x80", 4}, {"\xE2\x82", 2}};
  for (const auto& [bytes, count] : cases) EXPECT_EQ(WideFromUtf8(bytes), WideString(count, OLECHAR{0xFFFD})) << bytes;
  EXPECT_EQ(WideFromUtf8(std::string("\xE2") + "a"), WideString(1, OLECHAR{0xFFFD}) + OLESTR("a"));
}

}  // namespace
}  // namespace tarvex::test
