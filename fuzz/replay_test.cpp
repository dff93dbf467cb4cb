// Every kept input through its target: the seeds, and what once was a finding.
#include <gtest/gtest.h>

#include <filesystem>

#include "fuzz/targets.h"
#include "tests/support/source_filter.h"

namespace tarvex::fuzz {
namespace {

class Replay : public testing::TestWithParam<Target> {};

TEST_P(Replay, EveryKeptInputEndsWell) {
  std::size_t count = 0;
  for (const char* kind : {"seeds", "findings"}) {
    const std::filesystem::path folder = std::filesystem::path(TARVEX_SOURCE_DIR "/fuzz") / kind / GetParam().name;
    if (!std::filesystem::is_directory(folder)) continue;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      SCOPED_TRACE(entry.path().string());
      const std::vector<std::uint8_t> bytes = test::ReadWholeFile(entry.path().string());
      GetParam().run(bytes);
      ++count;
    }
  }
  EXPECT_GT(count, 0U) << "no input is kept";
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Replay, testing::ValuesIn(kTargets),
                         [](const auto& target) { return target.param.name; });

}  // namespace
}  // namespace tarvex::fuzz
