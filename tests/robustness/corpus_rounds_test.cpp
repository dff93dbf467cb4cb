// Every file of the corpus opened, played to its end and closed, round after round: handles, threads and
// memory are back where they were. TARVEX_ROUNDS says how many rounds over all files, TARVEX_MINUTES how long
// at most, TARVEX_CORPUS names another corpus.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "tests/damage/corpus_files.h"
#include "tests/robustness/usage.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

using Clock = std::chrono::steady_clock;

int FromEnvironment(const char* name, int otherwise) {
  const char* given = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets it
  return given != nullptr ? std::max(std::atoi(given), 1) : otherwise;
}

// In one graph, since Wine's own leaves a handle behind with each.
class CorpusRounds : public testing::Test {
 protected:
  void TearDown() override {
    m_graph.Reset();
    EXPECT_TRUE(ModuleBecomesIdle());
  }

  // A file may be refused, or end with an error; both are ends.
  void PlayOnce(const CorpusPath& file) {
    TestGraph graph(CreateSplitter(), m_graph);
    ++m_opened;
    if (FAILED(graph.Open(SystemPath(file.path))) || FAILED(graph.ConnectSinks(SinkKind::kCounting))) return;
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    ++m_played;
    if (!graph.WaitForEnd(3 * kPatience)) {
      EXPECT_TRUE(graph.WaitForEvent(EC_ERRORABORT, kPatience / 10)) << file.name << " does not end";
    }
  }

  void PlayAll() {
    for (const CorpusPath& file : CorpusPaths()) {
      PlayOnce(file);
      if (HasFailure()) return;
    }
  }

  ComPtr<IGraphBuilder> m_graph = CreateFilterGraph();
  std::size_t m_opened = 0;
  std::size_t m_played = 0;
};

TEST_F(CorpusRounds, LeaveHandlesThreadsAndMemoryFlat) {
  constexpr int kWarmUp = 2;
  for (int round = 0; round < kWarmUp && !HasFailure(); ++round) PlayAll();
  const Usage before;
  const int rounds = FromEnvironment("TARVEX_ROUNDS", 1);
  const auto end = Clock::now() + std::chrono::minutes(FromEnvironment("TARVEX_MINUTES", 1000));
  const int step = std::max(rounds / 20, 1);
  for (int round = 1; round <= rounds && !HasFailure() && Clock::now() < end; ++round) {
    PlayAll();
    if (round % step == 0) std::cout << "round " << round << ": " << Describe(Usage{}) << std::endl;
  }
  std::cout << m_opened << " times opened, " << m_played << " times played, " << CorpusPaths().size() << " files\n";
  ExpectBackAt(before);
}

TEST_F(CorpusRounds, InOneFilterLeaveNothing) {
  TestGraph graph(CreateSplitter(), m_graph);
  const auto openAll = [&graph] {
    for (const CorpusPath& file : CorpusPaths()) {
      graph.Open(SystemPath(file.path));
      EXPECT_EQ(graph.CloseSource(), S_OK);
      EXPECT_TRUE(graph.OutputPins().empty());
    }
  };
  openAll();
  const Usage before;
  openAll();
  ExpectBackAt(before);
}

}  // namespace
}  // namespace tarvex::test
