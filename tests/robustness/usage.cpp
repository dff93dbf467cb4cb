// See usage.h.
#include "tests/robustness/usage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "framework/thread.h"

namespace tarvex::test {
namespace {

constexpr std::uint32_t kHandleNoise = 2;
constexpr std::uint32_t kThreadNoise = 1;  // the system's own, as for timers
constexpr std::uint64_t kMemoryNoise = 1024ULL * 1024;
constexpr std::uint64_t kHeapNoise = 64ULL * 1024;

bool IsBackAt(const Usage& before, const Usage& now) {
  if (now.handles > before.handles + kHandleNoise || now.threads > before.threads + kThreadNoise) return false;
  return IsInstrumented() || (now.memory <= before.memory + kMemoryNoise && now.heap <= before.heap + kHeapNoise);
}

}  // namespace

std::string Describe(const Usage& usage) {
  return std::to_string(usage.handles) + " handles, " + std::to_string(usage.threads) + " threads, " +
         std::to_string(usage.memory / 1024) + " KiB, " + std::to_string(usage.heap) + " bytes on the heap";
}

namespace {

Usage UsageWhenBackAt(const Usage& before) {
  Usage now;
  for (int attempt = 0; attempt < 100 && !IsBackAt(before, now); ++attempt) {
    SleepMilliseconds(10);
    now = Usage{};
  }
  return now;
}

}  // namespace

bool ComesBackTo(const Usage& before) { return IsBackAt(before, UsageWhenBackAt(before)); }

void ExpectBackAt(const Usage& before) {
  const Usage now = UsageWhenBackAt(before);
  std::cout << "before: " << Describe(before) << "\nafter:  " << Describe(now) << '\n';
  EXPECT_GT(before.handles, 0U) << "nothing is measured";
  EXPECT_GT(before.memory, 0U) << "nothing is measured";
  EXPECT_TRUE(IsBackAt(before, now)) << Describe(now) << ", from " << Describe(before);
}

int Rounds(int full, int quick) {
  static const bool isLong = std::getenv("TARVEX_LONG") != nullptr;
  return isLong || RunsFullByDefault() ? full : quick;
}

}  // namespace tarvex::test
