// The log and texts: what is cut, errors at the border, and what is no text.
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

TEST(TextConversion, IllFormedIsReplacedByteByByte) {
  const auto lost = [](std::size_t bytes) { return WideString(bytes, OLECHAR{0xFFFD}); };
  const std::pair<const char*, WideString> cases[] = {{"\xC0\x80\xE0\x80\xAF\xF0\x80\x80\x80", lost(9)},  // overlong
                                                      {"\xED\xA0\x80", lost(3)},  // half of a pair
                                                      {"\xF4\x90\x80\x80\xF8\x88\x80\x80\x80", lost(9)},  // too large
                                                      {"a\xE6\x97", {OLECHAR{'a'}, OLECHAR{0xFFFD}, OLECHAR{0xFFFD}}},
                                                      {"\x80\xBF\xFE", lost(3)},
                                                      {"\xF0\x9F\x8E\xAC", OLESTR("\U0001F3AC")}};
  for (const auto& [bytes, wide] : cases) EXPECT_EQ(WideFromUtf8(bytes), wide);
  EXPECT_EQ(Utf8FromWide(WideString(1, OLECHAR{0xD800})), "\xEF\xBF\xBD") << "half of a pair";
}

}  // namespace
}  // namespace tarvex::test
