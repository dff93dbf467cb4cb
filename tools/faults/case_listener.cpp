// Compiled into every test program of the copy that tools/faults/run makes: after each case it writes to
// TARVEX_PLANTED_CASES how long the case took, whether it passed, and which faults' places it reached.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "tools/faults/planted.h"

namespace planted {
namespace {

class CaseListener : public testing::EmptyTestEventListener {
  // A constant's place is reached once, before the first case. It is in every case then.
  void OnTestProgramStart(const testing::UnitTest& /*program*/) override { std::memcpy(m_atStart, g_reached, kMost); }
  void OnTestEnd(const testing::TestInfo& info) override {
    std::FILE* file = std::fopen(std::getenv("TARVEX_PLANTED_CASES"), "a");
    if (file == nullptr) std::abort();
    std::fprintf(file, "%s.%s %d %lld", info.test_suite_name(), info.name(), info.result()->Failed() ? 0 : 1,
                 static_cast<long long>(info.result()->elapsed_time()));
    for (std::size_t k = 0; k < kMost; ++k) {
      if (g_reached[k] != 0) std::fprintf(file, " %zu", k);
    }
    std::fprintf(file, "\n");
    std::fclose(file);
    std::memcpy(g_reached, m_atStart, kMost);
  }

  unsigned char m_atStart[kMost] = {};
};

const bool g_listening = [] {
  if (g_reached != nullptr) testing::UnitTest::GetInstance()->listeners().Append(new CaseListener);
  return g_reached != nullptr;
}();

}  // namespace
}  // namespace planted
