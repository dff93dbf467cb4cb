// Opening and closing again and again leaves handles and memory where they were. TARVEX_LONG=1 makes
// the rounds of a full run in every build.
#include <gtest/gtest.h>

#include "tests/robustness/temporary_movie.h"
#include "tests/robustness/usage.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

// In one graph, since Wine's own leaves a handle behind with each.
class OpeningAgainAndAgain : public testing::Test {
 protected:
  void TearDown() override {
    m_graph.Reset();
    EXPECT_TRUE(ModuleBecomesIdle());
  }
  ComPtr<IGraphBuilder> m_graph = CreateFilterGraph();
};

TEST_F(OpeningAgainAndAgain, LeavesNothing) {
  const TemporaryMovie file({.videos = 1, .audios = 2, .subtitles = 1, .frames = 20});
  ExpectNothingLeftBy(Rounds(1000, 200), [this, &file] {
    TestGraph graph(CreateSplitter(), m_graph);
    ASSERT_EQ(graph.SeparatePins(true), S_OK);
    ASSERT_EQ(graph.Open(file.Path()), S_OK);
    ASSERT_EQ(graph.OutputPins().size(), 4U);
  });
}

TEST_F(OpeningAgainAndAgain, LeavesNothingAfterPlaying) {
  const TemporaryMovie file({.frames = 20});
  ExpectNothingLeftBy(Rounds(200, 50), [this, &file] {
    TestGraph graph(CreateSplitter(), m_graph);
    ASSERT_EQ(graph.Open(file.Path()), S_OK);
    ASSERT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    ASSERT_TRUE(graph.WaitForEnd());
  });
}

TEST_F(OpeningAgainAndAgain, LeavesNothingAfterARefusal) {
  ExpectNothingLeftBy(Rounds(1000, 200), [this] {
    const auto noise = CSourceFilter::FromBytes(std::vector<std::uint8_t>(4000, 0x42));
    TestGraph graph(CreateSplitter(), m_graph);
    ASSERT_TRUE(FAILED(graph.Open(noise.Get())));
  });
}

TEST_F(OpeningAgainAndAgain, InOneFilterLeavesNothing) {
  const TemporaryMovie file({.frames = 20});
  TestGraph graph(CreateSplitter(), m_graph);
  ExpectNothingLeftBy(Rounds(1000, 200), [&graph, &file] {
    ASSERT_EQ(graph.Open(file.Path()), S_OK);
    ASSERT_EQ(graph.CloseSource(), S_OK);
    ASSERT_TRUE(graph.OutputPins().empty());
  });
}

}  // namespace
}  // namespace tarvex::test
