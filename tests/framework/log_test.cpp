// The log and texts: what is cut, errors at the border, and what a file may hold instead of text.
#include "framework/log.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/com_boundary.h"
#include "framework/message_error.h"
#include "framework/text_conversion.h"

namespace tarvex::test {
namespace {

TEST(Log, ExceptionsBecomeCodesAtTheBorderAndLongTextsAreCut) {
  std::vector<std::string> texts;
  SetLogSink(
      [](void* context, const char* text) { static_cast<std::vector<std::string>*>(context)->emplace_back(text); },
      &texts);
  EXPECT_EQ(ComBoundary([]() -> HRESULT { throw MessageError("no segment"); }), E_FAIL);
  EXPECT_EQ(ComBoundary([]() -> HRESULT { throw std::bad_alloc(); }), E_OUTOFMEMORY);
  EXPECT_EQ(ComBoundary([]() -> HRESULT { throw std::runtime_error("odd"); }), E_UNEXPECTED);
  EXPECT_EQ(ComBoundary([]() -> HRESULT { throw 1; }), E_UNEXPECTED);
  EXPECT_EQ(ComBoundary([] { return S_FALSE; }), S_FALSE);
  LogFormat("%s", std::string(500, 'x').c_str());
  SetLogSink(nullptr, nullptr);
  EXPECT_EQ(texts, (std::vector<std::string>{"no segment", "odd", "unknown exception", std::string(199, 'x')}));
}

TEST(TextConversion, Utf8GoesThereAndBackAndIllFormedIsReplacedByteByByte) {
  const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xAC";
  const WideString wide = WideFromUtf8(text);
  EXPECT_EQ(wide, OLESTR("a\u00E9\u20AC\U0001F3AC"));
  EXPECT_EQ(Utf8FromWide(wide), text);
  EXPECT_EQ(Utf8FromWide(WideString(1, OLECHAR{0xD800})), "\xEF\xBF\xBD") << "half of a pair";
  const std::pair<const char*, std::size_t> cases[] = {
      {"\xFF", 1}, {"\xC0\x80", 2}, {"\xE0\x81\x81", 3}, {"\xED\xA0\x80", 3}, {"\xF4\x90\x80\x80", 4}, {"\xE2\x82", 2}};
  for (const auto& [bytes, count] : cases) EXPECT_EQ(WideFromUtf8(bytes), WideString(count, OLECHAR{0xFFFD})) << bytes;
  EXPECT_EQ(WideFromUtf8(std::string("\xE2") + "a"), WideString(1, OLECHAR{0xFFFD}) + OLESTR("a"));
}

}  // namespace
}  // namespace tarvex::test
