// The log: what is cut, and errors at the border.
#include "framework/log.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/com_boundary.h"
#include "framework/message_error.h"

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

}  // namespace
}  // namespace tarvex::test
