// Damaged files through the whole filter, with a sink on every pin: opened or refused, played to an end,
// sought in, stopped, and nothing is left. TARVEX_LONG=1 takes 100 of each file instead of one.
#include <gtest/gtest.h>

#include <iostream>

#include "tests/damage/case_watch.h"
#include "tests/damage/corpus_files.h"
#include "tests/damage/damaged_bytes.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

class DamagedGraph : public testing::TestWithParam<std::size_t> {
 protected:
  void Try(std::vector<std::uint8_t> bytes, std::uint32_t seed) {
    m_watch.Begin(CorpusPaths()[GetParam()].name.c_str(), "in a graph, mutation", seed);
    SCOPED_TRACE(CaseWatch::Name());
    {
      TestGraph graph;
      ASSERT_EQ(graph.SeparatePins(seed % 2 == 0), S_OK);
      if (SUCCEEDED(graph.Open(SourceFilter::FromBytes(std::move(bytes)).Get()))) Play(graph);
    }
    EXPECT_TRUE(ModuleBecomesIdle());
  }

  // A frame that is too large ends the pass without an end of stream, and says so to the graph.
  static bool Ends(const TestGraph& graph) {
    for (DWORD waited = 0; waited < kPatience; waited += kInterval) {
      if (graph.WaitForEnd(kInterval) || graph.WaitForEvent(EC_ERRORABORT, 1)) return true;
    }
    return false;
  }

  static void Play(TestGraph& graph) {
    if (FAILED(graph.ConnectSinks(SinkKind::kCounting))) return;  // a type that no pin can make
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    EXPECT_TRUE(Ends(graph)) << "neither an end nor an error";
    SeekToTheMiddle(graph);
    ASSERT_TRUE(SUCCEEDED(graph.Stop()));
  }

  static void SeekToTheMiddle(TestGraph& graph) {
    const auto pins = graph.OutputPins();
    const auto seeking = pins.empty() ? nullptr : QueryFor<IMediaSeeking>(pins[0].Get());
    LONGLONG time = 0;
    if (!seeking || FAILED(seeking->GetDuration(&time))) return;
    time /= 2;
    seeking->SetPositions(&time, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
  }

  static constexpr DWORD kInterval = 50;  // milliseconds
  const DamagedBytes m_bytes{ReadWholeFile(CorpusPaths()[GetParam()].path)};
  CaseWatch m_watch;
};

TEST_P(DamagedGraph, MutatedIsPlayedToAnEnd) {
  constexpr std::uint32_t kMany = 100;
  const std::uint32_t first = FirstSeed() + static_cast<std::uint32_t>(GetParam()) * kMany;
  for (std::uint32_t k = 0; k < (IsLongRun() ? kMany : 1); ++k) {
    Try(m_bytes.Mutated(first + k), first + k);
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, DamagedGraph, testing::Range<std::size_t>(0, CorpusPaths().size()),
                         [](const auto& file) { return TestNameOf(CorpusPaths()[file.param].name); });

}  // namespace
}  // namespace tarvex::test
