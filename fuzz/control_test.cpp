// An application that does anything at any time to a playing graph, from several threads and from the graph's sinks;
// and every file of a corpus played round after round. The seed is printed; TARVEX_SEED repeats one, TARVEX_OPERATIONS
// says how many operations each scene makes, TARVEX_ROUNDS how many rounds there are, TARVEX_SECONDS how long either
// takes at most, and TARVEX_THREADS how many threads share the operations where there are several.
#include <gtest/gtest.h>

#include <atomic>
#include <iostream>
#include <optional>
#include <random>
#include <thread>

#include "filter/interface_ids.h"
#include "framework/thread.h"
#include "fuzz/cases.h"
#include "fuzz/watch.h"
#include "include/tarvex/module_config.h"
#include "tests/corpus/manifest.h"
#include "tests/support/film.h"
#include "tests/support/source_dir.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::fuzz {
namespace {

constexpr unsigned kOperationsPerRound = 100;

/// Repeatable draws of one thread: 0 to below `sides`.
struct Dice {
  std::mt19937_64 random;
  unsigned operator()(unsigned sides) { return static_cast<unsigned>(random() % sides); }
};

// The pin may have lost its filter to a change of the pins.
void ExpectFine(HRESULT result) { EXPECT_TRUE(result == S_OK || result == VFW_E_NOT_CONNECTED) << result; }

struct Scene {
  const char* name;
  const char* file;  // null for a made-up one, without Cues and larger than the rings
  unsigned threads;
  bool sinksSeek;

  ComPtr<IBaseFilter> MakeSource() const {
    if (file != nullptr) return CreateFileSource(SystemPath(SourceDir() + file));
    return MakeFilm({.seconds = 12, .pictures = 1000000, .sound = 1000000, .sounds = 2});
  }
};

/// One splitter in a graph and everything that may be asked of it. Sinks are there for what a switch of streams renders
/// as well, and stay in the graph until all is closed.
class Application {
 public:
  Application(const Scene& scene, ComPtr<IGraphBuilder> graph)
      : m_scene(scene), m_graph(CreateSplitter(), std::move(graph)) {
    EXPECT_EQ(m_graph.Open(m_scene.MakeSource().Get()), S_OK);
    LONGLONG duration = 0;
    QueryFor<IMediaSeeking>(m_graph.OutputPins().front().Get())->GetDuration(&duration);
    m_duration = static_cast<unsigned>(std::min<std::int64_t>(duration, 120000000));
  }
  ~Application() { Close(); }
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  /// So many random operations. Any number of threads may be in here.
  void Perform(unsigned operations, unsigned seed);

  /// All streams from the start, each on a pin of its own: how many samples each sink got. Nobody else may be here.
  std::vector<std::size_t> PlayToTheEnd() {
    const Watched call("play to the end");
    m_sinksSeek = false;
    Close();
    EXPECT_EQ(m_graph.Open(m_scene.MakeSource().Get()), S_OK);
    for (const bool separate : {false, true}) m_graph.SeparatePins(separate);
    for (const auto& pin : m_graph.OutputPins()) EXPECT_EQ(ConnectSink(pin.Get(), SinkKind::kCounting), S_OK);
    LONGLONG zero = 0;
    const auto seeking = QueryFor<IMediaSeeking>(m_graph.OutputPins().front().Get());
    seeking->SetTimeFormat(&TIME_FORMAT_MEDIA_TIME);
    ExpectFine(seeking->SetPositions(&zero, AM_SEEKING_AbsolutePositioning, &zero, AM_SEEKING_AbsolutePositioning));
    EXPECT_TRUE(SUCCEEDED(m_graph.Run()));
    std::vector<std::size_t> counts;
    for (const auto& sink : m_sinks) {
      EXPECT_TRUE(sink->WaitForEnd(INFINITE));  // until the watch ends it
      counts.push_back(sink->CountOf(SinkEvent::Kind::kSample));
    }
    return counts;
  }

 private:
  ComPtr<IPin> AnyPin(Dice& dice) const {
    const auto pins = m_graph.OutputPins();
    return pins.empty() ? nullptr : pins[dice(static_cast<unsigned>(pins.size()))];
  }
  ComPtr<IMediaSeeking> AnySeeking(Dice& dice) const {
    const auto pin = AnyPin(dice);
    return pin ? pin.Query<IMediaSeeking>() : nullptr;
  }

  void Seek(Dice& dice) {
    const auto seeking = AnySeeking(dice);
    if (!seeking) return;
    if (dice(5) == 0) seeking->SetTimeFormat(dice(2) == 0 ? &TIME_FORMAT_FRAME : &TIME_FORMAT_MEDIA_TIME);
    if (dice(12) == 0) seeking->SetRate(0.5 * (1 + dice(4)));
    LONGLONG current = LONGLONG{dice(m_duration * 3 / 2)} - m_duration / 4;
    LONGLONG stop = dice(2) == 0 ? 0 : dice(m_duration);
    const DWORD mode = dice(3) == 0 ? dice(4) : static_cast<DWORD>(AM_SEEKING_AbsolutePositioning);
    ExpectFine(seeking->SetPositions(dice(9) == 0 ? nullptr : &current, mode, dice(9) == 0 ? nullptr : &stop, dice(4)));
  }
  void Ask(Dice& dice) {
    LONGLONG current = 0;
    LONGLONG stop = 0;
    if (const auto seeking = AnySeeking(dice)) {
      ExpectFine(seeking->GetPositions(&current, &stop));
      ExpectFine(seeking->GetDuration(&stop));
    }
    double seconds = 0;
    const auto markers = QueryFor<IAMExtendedSeeking>(m_graph.Splitter());
    EXPECT_EQ(markers->GetMarkerTime(static_cast<LONG>(dice(8)), &seconds), S_OK);
  }
  void SelectStream(Dice& dice) {
    const auto streams = QueryFor<IAMStreamSelect>(m_graph.Splitter());
    AddSink(SinkKind::kCounting);
    streams->Enable(static_cast<LONG>(dice(9)), AMSTREAMSELECTENABLE_ENABLE);
  }
  void ChangeSetting(Dice& dice) {
    const auto config = QueryFor<IModuleConfig>(m_graph.Splitter());
    VARIANT value{};
    value.vt = VT_I8;
    value.llVal = dice(m_duration);
    if (dice(3) == 0) config->SetValue(&paramPosition, &value);
    value.vt = VT_BOOL;
    value.boolVal = dice(2) == 0 ? VARIANT_FALSE : VARIANT_TRUE;
    const HRESULT result = config->SetValue(dice(2) == 0 ? &paramAnnexBOutput : &paramSeparatePins, &value);
    EXPECT_TRUE(result == S_OK || result == VFW_E_NOT_STOPPED) << result;
  }
  void Reopen(Dice& dice) {
    m_graph.Stop();
    m_graph.CloseSource();
    const auto other = CreateFileSource(SystemPath(SourceDir() + "/tests/data/sample.mkv"));
    m_graph.Open(dice(2) == 0 ? other.Get() : m_scene.MakeSource().Get());
    ConnectPins(dice);
  }
  // One side while it still runs, or both.
  void Disconnect(IPin* pin) {
    ComPtr<IPin> peer;
    if (pin == nullptr || FAILED(pin->ConnectedTo(peer.Put()))) return;
    if (SUCCEEDED(m_graph.Graph()->Disconnect(pin))) m_graph.Graph()->Disconnect(peer.Get());
  }
  void ConnectPins(Dice& dice) {
    constexpr SinkKind kKinds[] = {SinkKind::kCounting, SinkKind::kSlow, SinkKind::kHolding, SinkKind::kBlocking};
    if (dice(2) == 0) m_graph.Stop();
    for (const auto& pin : m_graph.OutputPins()) {
      if (IsConnected(pin.Get()) || dice(6) == 0) continue;
      ConnectSink(pin.Get(), kKinds[dice(4)]);
    }
  }

  ComPtr<SinkFilter> AddSink(SinkKind kind) {
    const auto sink = SinkFilter::Create(kind);
    sink->OnSample([this, pin = sink->Pin()](IMediaSample* /*sample*/) { SeekFrom(*pin); });
    m_graph.Graph()->AddFilter(sink.Get(), OLESTR("Sink"));
    return m_sinks.emplace_back(sink);
  }
  HRESULT ConnectSink(IPin* pin, SinkKind kind) {
    return m_graph.Graph()->ConnectDirect(pin, AddSink(kind)->Pin(), nullptr);
  }
  void SeekFrom(SinkPin& pin) {
    constexpr unsigned kSamplesPerSeek = 40;
    const unsigned number = ++m_sinkSamples;
    ComPtr<IPin> peer;
    if (!m_sinksSeek || number % kSamplesPerSeek != 0 || FAILED(pin.ConnectedTo(peer.Put()))) return;
    const Watched call("seek in Receive");
    LONGLONG current = number * std::int64_t{77777} % m_duration;
    const auto seeking = peer.Query<IMediaSeeking>();
    if (seeking) seeking->SetPositions(&current, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
  }
  // A graph that is stopped may have a filter that is not: it was connected while the graph ran, or did not follow.
  // Sinks leave the graph while what they are connected to is in it.
  void Close() {
    m_graph.Stop();
    for (const auto& sink : m_sinks) {
      sink->Stop();
      Disconnect(sink->Pin());
      m_graph.Graph()->RemoveFilter(sink.Get());  // a switch of streams may have taken it out
      EXPECT_EQ(sink->AfterEnd(), 0) << "something came after an end of stream";
    }
    m_sinks.clear();
    EXPECT_TRUE(SUCCEEDED(m_graph.DisconnectAll()));
    EXPECT_TRUE(SUCCEEDED(m_graph.CloseSource()));
  }

  const Scene& m_scene;
  TestGraph m_graph;
  unsigned m_duration = 0;  // 100 ns units, of its beginning
  std::atomic<bool> m_sinksSeek{m_scene.sinksSeek};
  std::atomic<unsigned> m_sinkSamples{0};
  CCritSec m_graphLock{"Application graph", LockRank::kController};
  std::vector<ComPtr<SinkFilter>> m_sinks;  // under m_graphLock
};

void Application::Perform(unsigned operations, unsigned seed) {
  static constexpr struct {
    const char* name;
    unsigned weight;
    bool needsGraph;  // changes its filters or its state, which an application does not do on two threads
    void (*perform)(Application& self, Dice& dice);
  } kOperations[] = {
      {"seek", 38, false, [](Application& self, Dice& dice) { self.Seek(dice); }},
      {"ask", 6, false, [](Application& self, Dice& dice) { self.Ask(dice); }},
      {"run", 14, true, [](Application& self, Dice& /*dice*/) { self.m_graph.Run(); }},
      {"pause", 7, true, [](Application& self, Dice& /*dice*/) { self.m_graph.Pause(); }},
      {"stop", 7, true, [](Application& self, Dice& /*dice*/) { self.m_graph.Stop(); }},
      {"select a stream", 6, true, [](Application& self, Dice& dice) { self.SelectStream(dice); }},
      {"change settings", 10, false, [](Application& self, Dice& dice) { self.ChangeSetting(dice); }},
      {"open the source again or another", 3, true, [](Application& self, Dice& dice) { self.Reopen(dice); }},
      {"disconnect a pin", 4, true, [](Application& self, Dice& dice) { self.Disconnect(self.AnyPin(dice).Get()); }},
      {"connect pins", 12, true, [](Application& self, Dice& dice) { self.ConnectPins(dice); }},
  };
  constexpr unsigned kAll = 107;
  Dice dice{std::mt19937_64(seed)};
  for (unsigned k = 0; k < operations; ++k) {
    unsigned drawn = dice(kAll);
    const auto* operation = kOperations;
    while (drawn >= operation->weight) drawn -= (operation++)->weight;
    {
      std::optional<CAutoLock> alone;
      if (operation->needsGraph) alone.emplace(m_graphLock);
      const Watched call(operation->name);
      operation->perform(*this, dice);
    }
    if (dice(3) == 0) SleepMilliseconds(dice(6));
  }
}

/// What this process uses of the system. Memory of instrumented builds, which keep what is freed, does not count.
struct Usage {
  std::uint64_t handles = OpenHandles();
  std::uint64_t threads = LivingThreads();
  std::uint64_t memory = IsInstrumented() ? 1 : MemoryInUse();  // bytes
};

// In one graph, since Wine's own leaves a handle behind with each.
class OneGraph : public testing::Test {
 protected:
  void TearDown() override {
    m_graph.Reset();
    EXPECT_TRUE(ModuleBecomesIdle());
  }
  /// The platform starts a thread of its own at some time; what leaks is left behind again and again.
  template <class Round>
  void ExpectNothingLeftBy(unsigned rounds, Round round) const {
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(FromEnvironment("TARVEX_SECONDS", 1000000));
    for (int chance = 0; chance < 3 && !HasFailure(); ++chance) {
      const Usage before;
      EXPECT_TRUE(before.handles != 0 && before.memory != 0) << "nothing is measured";
      unsigned count = 0;
      do {
        round();
      } while (++count < rounds && !HasFailure() && std::chrono::steady_clock::now() < end);
      const auto isBack = [&before](const Usage& now) {
        return now.handles <= before.handles + 2 && now.threads <= before.threads + 1 &&
               now.memory <= before.memory + (1 << 20);
      };
      if (Eventually([&] { return isBack({}); })) return;
    }
    ADD_FAILURE() << "something is left by each round";
  }

  ComPtr<IGraphBuilder> m_graph = CreateFilterGraph();
};

class RandomControl : public OneGraph, public testing::WithParamInterface<Scene> {
 protected:
  void SetUp() override { m_expected = Application(GetParam(), m_graph).PlayToTheEnd(); }

  void PlayRound(unsigned seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const unsigned threads = GetParam().threads == 1 ? 1 : FromEnvironment("TARVEX_THREADS", GetParam().threads);
    Application application(GetParam(), m_graph);
    {
      std::vector<std::jthread> performers;
      for (unsigned k = 0; k < threads; ++k) {
        performers.emplace_back([&, own = seed + k] { application.Perform(kOperationsPerRound / threads + 1, own); });
      }
    }
    EXPECT_EQ(application.PlayToTheEnd(), m_expected);
  }

  std::vector<std::size_t> m_expected;
};

TEST_P(RandomControl, EveryCallReturnsAndTheGraphStillPlays) {
  unsigned seed = FromEnvironment("TARVEX_SEED", std::random_device{}() % 1000000);
  std::cout << "TARVEX_SEED=" << seed << '\n';
  PlayRound(seed);
  ExpectNothingLeftBy(FromEnvironment("TARVEX_OPERATIONS", 2 * kOperationsPerRound) / kOperationsPerRound - 1,
                      [&] { PlayRound(seed += kOperationsPerRound); });
}

constexpr Scene kScenes[] = {
    {"OneThread", "/tests/data/sample.mkv", 1, false},
    {"ThreeThreads", "/tests/data/corpus/gen/multi.mkv", 3, false},
    {"ThreeThreadsAndSinks", "/tests/data/corpus/gen/multi.mkv", 3, true},
    {"ThreeThreadsAndSinksOnALargeFile", nullptr, 3, true},
};
INSTANTIATE_TEST_SUITE_P(Scenes, RandomControl, testing::ValuesIn(kScenes),
                         [](const auto& scene) { return std::string(scene.param.name); });

using CorpusRounds = OneGraph;

// A file may be refused, or end with an error; both are ends.
TEST_F(CorpusRounds, LeaveHandlesThreadsAndMemoryFlat) {
  std::size_t played = 0;
  const auto playAll = [&] {
    for (const CorpusFile& file : Corpus()) {
      const Watched call(file.name);
      TestGraph graph(CreateSplitter(), m_graph);
      if (FAILED(graph.Open(file.path)) || FAILED(graph.ConnectSinks(SinkKind::kCounting))) continue;
      ASSERT_TRUE(SUCCEEDED(graph.Run()));
      while (!graph.WaitForEnd(50) && !graph.WaitForEvent(EC_ERRORABORT, 1)) continue;  // until the watch ends it
      ++played;
    }
  };
  playAll();
  ExpectNothingLeftBy(FromEnvironment("TARVEX_ROUNDS", 1), playAll);
  EXPECT_GT(played, 0U);
}

}  // namespace
}  // namespace tarvex::fuzz
