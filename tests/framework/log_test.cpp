// The log: cut texts, and errors at the border.
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

class Log : public ::testing::Test {
 protected:
  Log() {
    SetLogSink([](void* context, const char* text) { static_cast<Log*>(context)->texts.emplace_back(text); }, this);
  }
  ~Log() override { SetLogSink(nullptr, nullptr); }

  std::vector<std::string> texts;
};

TEST_F(Log, FormattedTextIsCutToItsBuffer) {
  LogFormat("%s", std::string(500, 'x').c_str());
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0], std::string(199, 'x'));
}

TEST_F(Log, ExceptionsBecomeCodesAtTheBorder) {
  EXPECT_EQ(ComBoundary([]() -> HRESULT { throw MessageError("no segment"); }), E_FAIL);
  EXPECT_EQ(ComBoundary([]() -> HRESULT { throw std::bad_alloc(); }), E_OUTOFMEMORY);
  EXPECT_EQ(ComBoundary([]() -> HRESULT { throw std::runtime_error("odd"); }), E_UNEXPECTED);
  EXPECT_EQ(ComBoundary([]() -> HRESULT { throw 1; }), E_UNEXPECTED);
  EXPECT_EQ(ComBoundary([] { return S_FALSE; }), S_FALSE);
  EXPECT_EQ(texts, (std::vector<std::string>{"no segment", "odd", "unknown exception"}));
}

}  // namespace
}  // namespace tarvex::test
