// Every kept input through its target: the seeds, and what once was a finding. TARVEX_FUZZ_INPUTS names a
// folder with a folder of more inputs for each target, such as what a fuzzer has collected.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "fuzz/targets.h"
#include "tests/support/source_dir.h"
#include "tests/support/source_filter.h"

namespace tarvex::fuzz {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FoldersOf(const char* target) {
  const fs::path kept = test::SourceDir() + "/fuzz";
  std::vector<fs::path> folders = {kept / "seeds" / target, kept / "findings" / target};
  const char* more = std::getenv("TARVEX_FUZZ_INPUTS");  // NOLINT(concurrency-mt-unsafe): nobody sets it
  if (more != nullptr) folders.push_back(fs::path(more) / target);
  return folders;
}

class Replay : public testing::TestWithParam<Target> {};

TEST_P(Replay, EveryKeptInputEndsWell) {
  std::size_t count = 0;
  for (const fs::path& folder : FoldersOf(GetParam().name)) {
    if (!fs::is_directory(folder)) continue;
    for (const auto& entry : fs::directory_iterator(folder)) {
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
