// Stopping at any moment, with sinks that make it hard. The seed of the moments is printed; TARVEX_SEED
// repeats one, TARVEX_LONG=1 makes the rounds of a full run in every build.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>

#include "framework/thread.h"
#include "tests/robustness/temporary_movie.h"
#include "tests/robustness/usage.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kLongestStop{1000};

// Moments within a few frames of the start as well as much later ones.
class Moments {
 public:
  Moments() : m_seed(Seed()), m_random(m_seed) { std::cout << "TARVEX_SEED=" << m_seed << '\n'; }
  DWORD Milliseconds() {
    const DWORD longest = m_random() % 4 == 0 ? 60 : 8;
    return static_cast<DWORD>(m_random() % longest);
  }

 private:
  static unsigned Seed() {
    const char* given = std::getenv("TARVEX_SEED");
    return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device{}();
  }

  unsigned m_seed;
  std::mt19937 m_random;
};

// Much more than the rings of both pins hold.
const TemporaryMovie& LargeMovie() {
  static const TemporaryMovie file(
      {.videos = 1, .audios = 1, .frames = 300, .framesPerCluster = 10, .frameSize = 60000});
  return file;
}

template <class Stop>
void ExpectQuickStop(Stop stop) {
  const auto start = Clock::now();
  EXPECT_TRUE(SUCCEEDED(stop()));
  EXPECT_LT(Clock::now() - start, kLongestStop);
}

enum class Who { kGraph, kSplitterAlone };

// In one graph, since Wine's own leaves a handle behind with each.
class StoppingAtAnyMoment : public testing::TestWithParam<std::tuple<SinkKind, Who>> {
 protected:
  void TearDown() override {
    m_graph.Reset();
    EXPECT_TRUE(ModuleBecomesIdle());
  }

  static void StopOnce(TestGraph& graph, Who who, Moments& moments) {
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    SleepMilliseconds(moments.Milliseconds());
    if (who == Who::kSplitterAlone) ExpectQuickStop([&] { return graph.Splitter()->Stop(); });
    ExpectQuickStop([&] { return graph.Stop(); });
  }

  void StopTenTimes(SinkKind kind, Who who, Moments& moments) {
    TestGraph graph(CreateSplitter(), m_graph);
    ASSERT_EQ(graph.Open(LargeMovie().Path()), S_OK);
    ASSERT_EQ(graph.ConnectSinks(kind), S_OK);
    for (int k = 0; k < 10 && !HasFailure(); ++k) StopOnce(graph, who, moments);
    ExpectDisconnectable(graph);
  }

  static void ExpectDisconnectable(TestGraph& graph) {
    graph.DisconnectAll();
    EXPECT_FALSE(IsConnected(graph.InputPin().Get()));
    EXPECT_TRUE(graph.OutputPins().empty());
  }

  ComPtr<IGraphBuilder> m_graph = CreateFilterGraph();
};

TEST_P(StoppingAtAnyMoment, TakesLessThanASecondAndLeavesNothing) {
  const auto [kind, who] = GetParam();
  // The splitter alone makes its 200 stops over all kinds of sink.
  const int rounds = Rounds(who == Who::kGraph ? 200 : 50, 20);
  Moments moments;
  StopTenTimes(kind, who, moments);
  const Usage before;
  for (int k = 0; k < rounds && !HasFailure(); k += 10) StopTenTimes(kind, who, moments);
  ExpectBackAt(before);
}

INSTANTIATE_TEST_SUITE_P(Sinks, StoppingAtAnyMoment,
                         testing::Combine(testing::ValuesIn(kAllSinkKinds),
                                          testing::Values(Who::kGraph, Who::kSplitterAlone)),
                         [](const auto& parameters) {
                           return std::string(NameOf(std::get<0>(parameters.param))) +
                                  (std::get<1>(parameters.param) == Who::kGraph ? "_graph" : "_splitter_alone");
                         });

class Stopping : public testing::Test {
 protected:
  void TearDown() override { EXPECT_TRUE(ModuleBecomesIdle()); }
};

TEST_F(Stopping, TheSplitterAloneCanBeStartedAgain) {
  for (const SinkKind kind : kAllSinkKinds) {
    TestGraph graph;
    ASSERT_EQ(graph.Open(LargeMovie().Path()), S_OK);
    ASSERT_EQ(graph.ConnectSinks(kind), S_OK);
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    ASSERT_TRUE(graph.Sink(0).WaitForSample(kPatience));
    ExpectQuickStop([&] { return graph.Splitter()->Stop(); });
    for (const auto& sink : graph.Sinks()) {
      sink->LetGo();
      sink->Clear();
    }
    ASSERT_TRUE(SUCCEEDED(graph.Splitter()->Run(0)));
    EXPECT_TRUE(graph.Sink(0).WaitForSample(kPatience)) << NameOf(kind);
    ExpectQuickStop([&] { return graph.Stop(); });
  }
}

TEST_F(Stopping, AStoppedSplitterDeliversNothingMore) {
  TestGraph graph;
  ASSERT_EQ(graph.Open(LargeMovie().Path()), S_OK);
  ASSERT_EQ(graph.ConnectSinks(SinkKind::kSlow), S_OK);
  ASSERT_TRUE(SUCCEEDED(graph.Run()));
  ASSERT_TRUE(graph.Sink(0).WaitForSample(kPatience));
  ExpectQuickStop([&] { return graph.Splitter()->Stop(); });
  const std::size_t before = graph.Sink(0).Samples().size();
  SleepMilliseconds(50);
  EXPECT_EQ(graph.Sink(0).Samples().size(), before);
}

TEST_F(Stopping, WhileAReadIsBlocked) {
  TestGraph graph;
  const auto source = SourceFilter::FromBytes(MakeMovie({.frames = 400, .frameSize = 20000}));
  ASSERT_EQ(graph.Open(source.Get()), S_OK);
  ASSERT_EQ(graph.ConnectSinks(SinkKind::kSlow), S_OK);
  ASSERT_TRUE(SUCCEEDED(graph.Run()));
  ASSERT_TRUE(graph.Sink(0).WaitForSample(kPatience));
  source->BlockFrom(0);
  ASSERT_TRUE(source->WaitUntilBlocked(kPatience));
  ExpectQuickStop([&] { return graph.Stop(); });
  EXPECT_GT(source->Flushes(), 0);
  source->Unblock();
}

TEST_F(Stopping, WhileAllRingsAreFull) {
  TestGraph graph;
  ASSERT_EQ(graph.Open(LargeMovie().Path()), S_OK);
  ASSERT_EQ(graph.ConnectSinks(SinkKind::kHolding), S_OK);
  ASSERT_TRUE(SUCCEEDED(graph.Run()));
  // A ring holds 174 of these frames.
  for (int k = 0; k < 500 && graph.Sink(0).Samples().size() < 174; ++k) SleepMilliseconds(10);
  EXPECT_EQ(graph.Sink(0).Samples().size(), 174U);
  ExpectQuickStop([&] { return graph.Splitter()->Stop(); });
  ExpectQuickStop([&] { return graph.Stop(); });
}

TEST_F(Stopping, BeforeAnythingWasDelivered) {
  TestGraph graph;
  const auto source = SourceFilter::FromBytes(MakeMovie({.frames = 400, .frameSize = 20000}));
  ASSERT_EQ(graph.Open(source.Get()), S_OK);
  ASSERT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
  for (int k = 0; k < Rounds(200, 50) && !HasFailure(); ++k) {
    ASSERT_TRUE(SUCCEEDED(graph.Pause()));
    ExpectQuickStop([&] { return graph.Stop(); });
  }
}

}  // namespace
}  // namespace tarvex::test
