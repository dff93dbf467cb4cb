// An application that does anything at any time to a playing graph, from several threads and from the graph's sinks;
// and every file of a corpus played round after round. The seed is printed; TARVEX_SEED repeats one, TARVEX_OPERATIONS
// says how many operations each scene makes, TARVEX_ROUNDS how many rounds there are, TARVEX_SECONDS how long either
// takes at most, and TARVEX_THREADS how many threads share the operations where there are several.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <numeric>
#include <optional>
#include <random>
#include <thread>

#include "filter/interface_ids.h"
#include "framework/thread.h"
#include "fuzz/cases.h"
#include "fuzz/watch.h"
#include "include/tarvex/module_config.h"
#include "tests/support/movie.h"
#include "tests/support/source_dir.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::fuzz {
namespace {

constexpr unsigned kOperationsPerRound = 100;

/// Repeatable draws of one thread.
class Dice {
 public:
  explicit Dice(unsigned seed) : m_random(seed) {}
  /// 0 to below `sides`.
  unsigned operator()(unsigned sides) { return static_cast<unsigned>(m_random() % sides); }
  std::int64_t Between(std::int64_t low, std::int64_t high) {
    return low + static_cast<std::int64_t>(m_random() % static_cast<std::uint64_t>(high - low));
  }

 private:
  std::mt19937_64 m_random;
};

// The pin may have lost its filter to a change of the pins.
void ExpectFine(HRESULT result) { EXPECT_TRUE(result == S_OK || result == VFW_E_NOT_CONNECTED) << result; }

/// One splitter in a graph and everything that may be asked of it. With `sinksSeek` sinks seek from within Receive.
class Application {
 public:
  Application(const std::string& path, ComPtr<IGraphBuilder> graph, bool sinksSeek)
      : m_path(path), m_graph(CreateSplitter(), std::move(graph)), m_sinksSeek(sinksSeek) {
    EXPECT_EQ(OpenSource(path), S_OK);
    LONGLONG duration = 0;
    QueryFor<IMediaSeeking>(m_graph.OutputPins().front().Get())->GetDuration(&duration);
    m_duration = std::min<std::int64_t>(duration, 120000000);
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
    EXPECT_EQ(OpenSource(m_path), S_OK);
    for (const VARIANT_BOOL on : {VARIANT_FALSE, VARIANT_TRUE}) Set(paramSeparatePins, VT_BOOL, on);
    for (const auto& pin : m_graph.OutputPins()) Connect(pin.Get(), SinkKind::kCounting);
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
    Close();
    EXPECT_EQ(m_afterEnd, 0) << "something came after an end of stream";
    return counts;
  }

 private:
  struct Operation {
    const char* name;
    unsigned weight;
    bool needsGraph;  // changes its filters or its state
    void (Application::*perform)(Dice& dice);
  };

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
    LONGLONG current = dice.Between(-m_duration / 4, m_duration * 5 / 4);
    LONGLONG stop = dice(2) == 0 ? 0 : dice.Between(0, m_duration);
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
  void Run(Dice& /*dice*/) { m_graph.Run(); }
  void Pause(Dice& /*dice*/) { m_graph.Pause(); }
  void Stop(Dice& /*dice*/) { m_graph.Stop(); }
  // A spare filter stands ready for what the switch renders.
  void SelectStream(Dice& dice) {
    const auto streams = QueryFor<IAMStreamSelect>(m_graph.Splitter());
    DWORD count = 0;
    EXPECT_EQ(streams->Count(&count), S_OK);
    if (count == 0) return;
    const auto spare = SinkFilter::Create(SinkKind::kCounting);
    m_graph.Graph()->AddFilter(spare.Get(), OLESTR("Spare"));
    streams->Enable(static_cast<LONG>(dice(count)), AMSTREAMSELECTENABLE_ENABLE);
    Keep(spare);
    DropSinks(false);
  }
  HRESULT Set(const GUID& parameter, VARTYPE type, std::int64_t value) {
    VARIANT variant{};
    variant.vt = type;
    if (type == VT_BOOL) {
      variant.boolVal = static_cast<VARIANT_BOOL>(value);
    } else {
      variant.llVal = value;
    }
    return QueryFor<IModuleConfig>(m_graph.Splitter())->SetValue(&parameter, &variant);
  }
  void ChangeSetting(Dice& dice) {
    const unsigned which = dice(3);
    const HRESULT result = which == 0   ? Set(paramAnnexBOutput, VT_BOOL, dice(2))
                           : which == 1 ? Set(paramSeparatePins, VT_BOOL, dice(2))
                                        : Set(paramPosition, VT_I8, dice.Between(0, m_duration));
    EXPECT_TRUE(which != 0 || result == S_OK) << result;
    EXPECT_TRUE(which != 1 || result == S_OK || result == VFW_E_NOT_STOPPED) << result;
  }
  void Reopen(Dice& dice) {
    {
      const CAutoLock lock(m_sourceLock);
      m_graph.Stop();
      DropSources();
      OpenSource(dice(2) == 0 ? m_path : SystemPath(SourceDir() + "/tests/data/sample.mkv"));
    }
    ConnectPins(dice);
  }
  void DisconnectPin(Dice& dice) {
    const auto pin = AnyPin(dice);
    ComPtr<IPin> peer;
    if (!pin || FAILED(pin->ConnectedTo(peer.Put()))) return;
    // One side while it still runs, or both.
    if (FAILED(m_graph.Graph()->Disconnect(pin.Get()))) return;
    m_graph.Graph()->Disconnect(peer.Get());
    DropSinks(false);
  }
  void ConnectPins(Dice& dice) {
    constexpr SinkKind kKinds[] = {SinkKind::kCounting, SinkKind::kSlow, SinkKind::kHolding, SinkKind::kBlocking};
    const auto pins = m_graph.OutputPins();
    if (std::ranges::all_of(pins, [](const auto& pin) { return IsConnected(pin.Get()); })) return;
    if (dice(2) == 0) m_graph.Stop();
    for (const auto& pin : pins) {
      if (!IsConnected(pin.Get()) && dice(6) != 0) Connect(pin.Get(), kKinds[dice(4)]);
    }
    DropSinks(false);
  }

  void Connect(IPin* pin, SinkKind kind) {
    const auto sink = SinkFilter::Create(kind);
    sink->OnSample(
        [this, seeking = QueryFor<IMediaSeeking>(pin)](IMediaSample* /*sample*/) { SeekFrom(seeking.Get()); });
    m_graph.Graph()->AddFilter(sink.Get(), OLESTR("Sink"));
    m_graph.Graph()->ConnectDirect(pin, sink->Pin(), nullptr);
    Keep(sink);
  }
  void SeekFrom(IMediaSeeking* seeking) {
    constexpr unsigned kSamplesPerSeek = 40;
    const unsigned number = ++m_sinkSamples;
    if (!m_sinksSeek || number % kSamplesPerSeek != 0) return;
    const Watched call("seek in Receive");
    LONGLONG current = number * std::int64_t{77777} % m_duration;
    seeking->SetPositions(&current, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
  }
  void Keep(const ComPtr<SinkFilter>& sink) {
    const CAutoLock lock(m_lock);
    m_sinks.push_back(sink);
  }
  void DropSinks(bool connectedToo) {
    std::vector<ComPtr<SinkFilter>> dropped;
    {
      const CAutoLock lock(m_lock);
      const auto first = std::stable_partition(m_sinks.begin(), m_sinks.end(), [connectedToo](const auto& sink) {
        return !connectedToo && IsConnected(sink->Pin());
      });
      dropped.assign(first, m_sinks.end());
      m_sinks.erase(first, m_sinks.end());
    }
    for (const auto& sink : dropped) {
      // Another thread may have rendered a pin into it meanwhile, and the splitter have taken it out.
      if (m_graph.Graph()->RemoveFilter(sink.Get()) == VFW_E_NOT_STOPPED) {
        Keep(sink);
      } else {
        m_afterEnd += sink->AfterEnd();
      }
    }
  }
  HRESULT OpenSource(const std::string& path) {
    m_sources.push_back(CreateFileSource(path));
    IBaseFilter* source = m_sources.back().Get();
    m_graph.Graph()->AddFilter(source, OLESTR("Source"));
    return m_graph.Graph()->ConnectDirect(AllPins(source).front().Get(), m_input.Get(), nullptr);
  }
  // Another thread may run the graph again at any moment, and then they stay.
  void DropSources() {
    m_input->Disconnect();
    std::erase_if(m_sources, [this](const auto& source) {
      AllPins(source.Get()).front()->Disconnect();
      return m_graph.Graph()->RemoveFilter(source.Get()) == S_OK;
    });
  }
  void Close() {
    m_graph.Stop();
    DropSinks(true);
    DropSources();
  }

  const std::string m_path;
  TestGraph m_graph;
  const ComPtr<IPin> m_input = m_graph.InputPin();
  std::int64_t m_duration = 0;
  std::atomic<bool> m_sinksSeek;
  std::atomic<unsigned> m_sinkSamples{0};
  std::atomic<int> m_afterEnd{0};                                    // of sinks that are gone
  CCritSec m_graphLock{"Application graph", LockRank::kController};  // where the graph needs one
  CCritSec m_sourceLock{"Application source", LockRank::kController};
  std::vector<ComPtr<IBaseFilter>> m_sources;  // those in the graph, the last one connected; under m_sourceLock
  CCritSec m_lock{"Application", LockRank::kController};
  std::vector<ComPtr<SinkFilter>> m_sinks;  // under m_lock
};

void Application::Perform(unsigned operations, unsigned seed) {
  static constexpr Operation kOperations[] = {
      {"seek", 38, false, &Application::Seek},
      {"ask", 6, false, &Application::Ask},
      {"run", 14, true, &Application::Run},
      {"pause", 7, true, &Application::Pause},
      {"stop", 7, true, &Application::Stop},
      {"select a stream", 6, true, &Application::SelectStream},
      {"change a setting", 10, false, &Application::ChangeSetting},
      {"close the source and open it or another", 3, true, &Application::Reopen},
      {"disconnect a pin", 4, true, &Application::DisconnectPin},
      {"connect pins", 12, true, &Application::ConnectPins},
  };
  constexpr unsigned kAll = 107;
  Dice dice(seed);
  for (unsigned k = 0; k < operations; ++k) {
    unsigned drawn = dice(kAll);
    const Operation* operation = kOperations;
    while (drawn >= operation->weight) drawn -= (operation++)->weight;
    {
      std::optional<CAutoLock> alone;
      if (operation->needsGraph && !GraphTakesThreads()) alone.emplace(m_graphLock);
      const Watched call(operation->name);
      (this->*operation->perform)(dice);
    }
    if (dice(3) == 0) SleepMilliseconds(dice(6));
  }
}

/// What this process uses of the system. Memory of instrumented builds, which keep what is freed, does not count.
struct Usage {
  std::uint64_t handles = OpenHandles();
  std::uint64_t threads = LivingThreads();
  std::uint64_t memory = IsInstrumented() ? 1 : MemoryInUse();  // bytes
  std::uint64_t heap = IsInstrumented() ? 1 : HeapInUse();      // bytes

  /// Or is so soon: a thread that was let go may still be on its way out.
  bool IsBack() const {
    EXPECT_TRUE(handles != 0 && memory != 0) << "nothing is measured";
    for (int attempt = 0; attempt < 500; ++attempt) {
      const Usage now;
      if (now.handles <= handles + 2 && now.threads <= threads + 1 && now.memory <= memory + (1 << 20) &&
          now.heap <= heap + (64 << 10)) {
        return true;
      }
      SleepMilliseconds(10);
    }
    return false;
  }
};

std::ostream& operator<<(std::ostream& out, const Usage& usage) {
  return out << usage.handles << " handles, " << usage.threads << " threads, " << usage.memory / 1024 << " KiB, "
             << usage.heap << " bytes on the heap";
}

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
      unsigned count = 0;
      do {
        round();
      } while (++count < rounds && !HasFailure() && std::chrono::steady_clock::now() < end);
      const bool isBack = before.IsBack();
      std::cout << "before: " << before << "\nafter:  " << Usage{} << '\n';
      if (isBack) return;
    }
    ADD_FAILURE() << "something is left by each round";
  }

  ComPtr<IGraphBuilder> m_graph = CreateFilterGraph();
};

struct Scene {
  const char* name;
  const char* file;  // null for a made-up one, without Cues and larger than the rings
  unsigned threads;
  bool sinksSeek;
};

class RandomControl : public OneGraph, public testing::WithParamInterface<Scene> {
 protected:
  void SetUp() override {
    if (GetParam().file == nullptr) {
      const auto movie =
          MakeMovie({.videos = 1, .audios = 2, .frames = 300, .framesPerCluster = 10, .frameSize = 40000});
      std::ofstream file(m_path = m_movie.string(), std::ios::binary);
      file.write(reinterpret_cast<const char*>(movie.data()), static_cast<std::streamsize>(movie.size()));
    }
    m_expected = Application(m_path, m_graph, false).PlayToTheEnd();
  }
  void TearDown() override {
    OneGraph::TearDown();
    std::error_code ignored;
    std::filesystem::remove(m_movie, ignored);
  }

  void PlayRound(unsigned seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const unsigned threads = GetParam().threads == 1 ? 1 : FromEnvironment("TARVEX_THREADS", GetParam().threads);
    Application application(m_path, m_graph, GetParam().sinksSeek);
    {
      std::vector<std::jthread> performers;
      for (unsigned k = 0; k < threads; ++k) {
        performers.emplace_back([&, own = seed + k] { application.Perform(kOperationsPerRound / threads + 1, own); });
      }
    }
    EXPECT_EQ(application.PlayToTheEnd(), m_expected);
  }

  const std::filesystem::path m_movie =
      std::filesystem::temp_directory_path() / ("tarvex-" + std::to_string(std::random_device{}()) + ".mkv");
  std::string m_path = GetParam().file == nullptr ? "" : SystemPath(SourceDir() + GetParam().file);
  std::vector<std::size_t> m_expected;
};

TEST_P(RandomControl, EveryCallReturnsAndTheGraphStillPlays) {
  unsigned seed = FromEnvironment("TARVEX_SEED", std::random_device{}() % 1000000);
  std::cout << "TARVEX_SEED=" << seed << '\n';
  PlayRound(seed);
  unsigned total = kOperationsPerRound;
  ExpectNothingLeftBy(FromEnvironment("TARVEX_OPERATIONS", 2 * kOperationsPerRound) / kOperationsPerRound - 1, [&] {
    PlayRound(seed += kOperationsPerRound);
    total += kOperationsPerRound;
  });
  std::cout << "operations: " << total << '\n';
}

constexpr Scene kScenes[] = {
    {"OneThread", "/tests/data/sample.mkv", 1, false},
    {"ThreeThreads", "/tests/data/corpus/gen/multi.mkv", 3, false},
    {"ThreeThreadsAndSinks", "/tests/data/corpus/gen/multi.mkv", 3, true},
    {"ThreeThreadsAndSinksOnALargeFile", nullptr, 3, true},
};
INSTANTIATE_TEST_SUITE_P(Scenes, RandomControl, testing::ValuesIn(kScenes),
                         [](const auto& scene) { return std::string(scene.param.name); });

class CorpusRounds : public OneGraph {
 protected:
  // A file may be refused, or end with an error; both are ends. Each is opened in a filter of its own, and then in one
  // that had all before it.
  void Play(const CorpusFile& file, TestGraph& last) {
    const Watched call(file.name);
    {
      TestGraph graph(CreateSplitter(), m_graph);
      if (SUCCEEDED(graph.Open(file.path)) && SUCCEEDED(graph.ConnectSinks(SinkKind::kCounting))) {
        ASSERT_TRUE(SUCCEEDED(graph.Run()));
        while (!graph.WaitForEnd(50) && !graph.WaitForEvent(EC_ERRORABORT, 1)) continue;  // until the watch ends it
        ++m_played;
      }
    }
    last.Open(file.path);
    EXPECT_EQ(last.CloseSource(), S_OK);
    EXPECT_TRUE(last.OutputPins().empty());
  }
  void PlayAll() {
    TestGraph last(CreateSplitter(), m_graph);
    for (const CorpusFile& file : CorpusFiles()) {
      if (!HasFailure()) Play(file, last);
    }
  }

  std::size_t m_played = 0;
};

TEST_F(CorpusRounds, LeaveHandlesThreadsAndMemoryFlat) {
  PlayAll();
  ExpectNothingLeftBy(FromEnvironment("TARVEX_ROUNDS", 1), [this] { PlayAll(); });
  EXPECT_GT(m_played, 0U);
  std::cout << m_played << " times played, " << CorpusFiles().size() << " files\n";
}

}  // namespace
}  // namespace tarvex::fuzz
