// Random operations on a playing graph, from several threads and from its sinks. The seed is printed;
// TARVEX_SEED repeats one, TARVEX_OPERATIONS says how many operations each case makes, TARVEX_SECONDS how long at
// most, and TARVEX_THREADS how many threads share them where there are several.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <optional>

#include "tests/control/random_controller.h"
#include "tests/robustness/temporary_movie.h"
#include "tests/robustness/usage.h"
#include "tests/support/source_dir.h"
#include "tests/support/splitter_module.h"

namespace tarvex::test {
namespace {

constexpr unsigned kOperationsPerRound = 100;

unsigned FromEnvironment(const char* name, unsigned otherwise) {
  const char* given = std::getenv(name);
  return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : otherwise;
}

struct Scene {
  const char* name;
  const char* file;  // null for a made-up one, without Cues and larger than the rings
  unsigned threads;
  bool sinksSeek;
};

constexpr Scene kScenes[] = {
    {"OneThread", "/tests/data/sample.mkv", 1, false},
    {"ThreeThreads", "/tests/data/corpus/gen/multi.mkv", 3, false},
    {"ThreeThreadsAndSinks", "/tests/data/corpus/gen/multi.mkv", 3, true},
    {"ThreeThreadsAndSinksOnALargeFile", nullptr, 3, true},
};

// In one graph, since Wine's own leaves a handle behind with each.
class RandomControl : public testing::TestWithParam<Scene> {
 protected:
  void SetUp() override {
    if (GetParam().file == nullptr) m_movie.emplace(kLarge);
    RandomController fresh(Path(), m_graph, m_dog, false);
    m_expected = fresh.PlayToTheEnd();
  }
  void TearDown() override {
    m_graph.Reset();
    EXPECT_TRUE(ModuleBecomesIdle());
  }

  std::string Path() const { return m_movie ? m_movie->Path() : SystemPath(SourceDir() + GetParam().file); }

  void PlayRound(unsigned seed) {
    const Scene& scene = GetParam();
    RandomController controller(Path(), m_graph, m_dog, scene.sinksSeek);
    const unsigned count = scene.threads == 1 ? 1 : FromEnvironment("TARVEX_THREADS", scene.threads);
    std::vector<Thread> threads(count);
    for (Thread& thread : threads) {
      ASSERT_EQ(thread.Start(
                    [&controller, count, own = seed++] { controller.Perform(kOperationsPerRound / count + 1, own); }),
                S_OK);
    }
    for (Thread& thread : threads) thread.Join();
    EXPECT_EQ(controller.PlayToTheEnd(), m_expected);
    EXPECT_EQ(controller.SamplesAfterEnd(), 0) << "something came after an end of stream";
  }

  static constexpr MovieShape kLarge{
      .videos = 1, .audios = 2, .frames = 300, .framesPerCluster = 10, .frameSize = 40000};
  Watchdog m_dog;
  std::optional<TemporaryMovie> m_movie;
  ComPtr<IGraphBuilder> m_graph = CreateFilterGraph();
  std::vector<std::size_t> m_expected;
};

TEST_P(RandomControl, EveryCallReturnsAndTheGraphStillPlays) {
  using Clock = std::chrono::steady_clock;
  const unsigned operations = FromEnvironment("TARVEX_OPERATIONS", 2 * kOperationsPerRound);
  const auto end = Clock::now() + std::chrono::seconds(FromEnvironment("TARVEX_SECONDS", 1000000));
  unsigned seed = FromEnvironment("TARVEX_SEED", std::random_device{}() % 1000000);
  std::cout << "TARVEX_SEED=" << seed << '\n';
  PlayRound(seed);
  // The platform starts a thread of its own at some time; what leaks is left behind again and again.
  constexpr int kChances = 3;
  unsigned total = kOperationsPerRound;
  for (int chance = 1;; ++chance) {
    const Usage before;
    for (unsigned done = kOperationsPerRound; done < operations && !HasFailure() && Clock::now() < end;
         done += kOperationsPerRound, total += kOperationsPerRound) {
      seed += kOperationsPerRound;
      SCOPED_TRACE("seed " + std::to_string(seed));
      PlayRound(seed);
    }
    if (chance < kChances && !HasFailure() && !ComesBackTo(before)) continue;
    std::cout << "operations: " << total << "\nslowest: " << m_dog.Slowest() << '\n';
    return ExpectBackAt(before);
  }
}

INSTANTIATE_TEST_SUITE_P(Scenes, RandomControl, testing::ValuesIn(kScenes),
                         [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
}  // namespace tarvex::test
