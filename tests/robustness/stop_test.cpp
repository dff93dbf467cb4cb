// Stopping at any moment, with sinks that make it hard, and opening and closing again and again. The
// seed of the moments is printed; TARVEX_SEED repeats one, TARVEX_LONG=1 makes the rounds of a full run
// in every build.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>

#include "framework/thread.h"
#include "tests/support/movie.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kLongestStop{1000};

int Rounds(int full, int quick) {
  static const bool isLong = std::getenv("TARVEX_LONG") != nullptr;
  return isLong || RunsFullByDefault() ? full : quick;
}

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

// A file that is there as long as the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const MovieShape& shape)
      : m_path(std::filesystem::temp_directory_path() / ("tarvex-" + std::to_string(std::random_device{}()) + ".mkv")) {
    const std::vector<std::uint8_t> bytes = MakeMovie(shape);
    std::ofstream file(m_path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  std::string Path() const { return m_path.string(); }

 private:
  std::filesystem::path m_path;
};

// Much more than the rings of both pins hold.
const TemporaryFile& LargeMovie() {
  static const TemporaryFile file(
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

class StoppingAtAnyMoment : public testing::TestWithParam<std::tuple<SinkKind, Who>> {
 protected:
  void TearDown() override { EXPECT_TRUE(ModuleBecomesIdle()); }

  static void StopOnce(TestGraph& graph, Who who, Moments& moments) {
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    SleepMilliseconds(moments.Milliseconds());
    if (who == Who::kSplitterAlone) ExpectQuickStop([&] { return graph.Splitter()->Stop(); });
    ExpectQuickStop([&] { return graph.Stop(); });
  }

  static void ExpectDisconnectable(TestGraph& graph) {
    graph.DisconnectAll();
    EXPECT_FALSE(IsConnected(graph.InputPin().Get()));
    EXPECT_TRUE(graph.OutputPins().empty());
  }
};

TEST_P(StoppingAtAnyMoment, TakesLessThanASecond) {
  const auto [kind, who] = GetParam();
  constexpr int kRoundsPerGraph = 10;
  Moments moments;
  for (int left = Rounds(200, 20); left > 0; left -= kRoundsPerGraph) {
    TestGraph graph;
    ASSERT_EQ(graph.Open(LargeMovie().Path()), S_OK);
    ASSERT_EQ(graph.ConnectSinks(kind), S_OK);
    for (int k = 0; k < kRoundsPerGraph && !HasFailure(); ++k) StopOnce(graph, who, moments);
    ExpectDisconnectable(graph);
    if (HasFailure()) break;
  }
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
  const auto source = CSourceFilter::FromBytes(MakeMovie({.frames = 400, .frameSize = 20000}));
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
  const auto source = CSourceFilter::FromBytes(MakeMovie({.frames = 400, .frameSize = 20000}));
  ASSERT_EQ(graph.Open(source.Get()), S_OK);
  ASSERT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
  for (int k = 0; k < Rounds(200, 50) && !HasFailure(); ++k) {
    ASSERT_TRUE(SUCCEEDED(graph.Pause()));
    ExpectQuickStop([&] { return graph.Stop(); });
  }
}

struct Usage {
  std::uint32_t handles = OpenHandles();
  std::uint64_t memory = MemoryInUse();
};

template <class Use>
void ExpectNothingLeftBy(int rounds, Use use) {
  constexpr int kWarmUp = 40;
  constexpr std::uint64_t kMemoryNoise = 1024ULL * 1024;
  constexpr std::uint32_t kHandleNoise = 2;
  for (int k = 0; k < kWarmUp && !testing::Test::HasFailure(); ++k) use();
  ASSERT_TRUE(ModuleBecomesIdle());
  const Usage before;
  for (int k = 0; k < rounds && !testing::Test::HasFailure(); ++k) use();
  ASSERT_TRUE(ModuleBecomesIdle());
  const Usage after;
  std::cout << rounds << " rounds: handles " << before.handles << " -> " << after.handles << ", memory "
            << before.memory / 1024 << " -> " << after.memory / 1024 << " KiB\n";
  EXPECT_LE(after.handles, before.handles + kHandleNoise);
  if (!IsInstrumented()) {
    EXPECT_LE(after.memory, before.memory + kMemoryNoise);
  }
}

class OpeningAgainAndAgain : public Stopping {};

TEST_F(OpeningAgainAndAgain, LeavesNothing) {
  const TemporaryFile file({.videos = 1, .audios = 2, .subtitles = 1, .frames = 20});
  ExpectNothingLeftBy(Rounds(1000, 200), [&file] {
    TestGraph graph;
    ASSERT_EQ(graph.SeparatePins(true), S_OK);
    ASSERT_EQ(graph.Open(file.Path()), S_OK);
    ASSERT_EQ(graph.OutputPins().size(), 4U);
  });
}

TEST_F(OpeningAgainAndAgain, LeavesNothingAfterPlaying) {
  const TemporaryFile file({.frames = 20});
  ExpectNothingLeftBy(Rounds(200, 50), [&file] {
    TestGraph graph;
    ASSERT_EQ(graph.Open(file.Path()), S_OK);
    ASSERT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    ASSERT_TRUE(graph.WaitForEnd());
  });
}

TEST_F(OpeningAgainAndAgain, LeavesNothingAfterARefusal) {
  ExpectNothingLeftBy(Rounds(1000, 200), [] {
    const auto noise = CSourceFilter::FromBytes(std::vector<std::uint8_t>(4000, 0x42));
    TestGraph graph;
    ASSERT_TRUE(FAILED(graph.Open(noise.Get())));
  });
}

TEST_F(OpeningAgainAndAgain, InOneFilterLeavesNothing) {
  TestGraph graph;
  const auto source = CSourceFilter::FromBytes(MakeMovie({}));
  constexpr int kWarmUp = 40;
  Usage before;
  const int rounds = Rounds(1000, 200);
  for (int k = 0; k < rounds + kWarmUp && !HasFailure(); ++k) {
    if (k == kWarmUp) before = Usage{};
    ASSERT_EQ(graph.Open(source.Get()), S_OK);
    ASSERT_EQ(graph.CloseSource(), S_OK);
  }
  EXPECT_LE(OpenHandles(), before.handles + 2);
}

}  // namespace
}  // namespace tarvex::test
