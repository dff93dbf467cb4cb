// See random_controller.h.
#include "tests/control/random_controller.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <optional>

#include "filter/interface_ids.h"
#include "framework/thread.h"
#include "include/tarvex/module_config.h"
#include "tests/support/source_dir.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_system.h"

namespace tarvex::test {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds kLimit{1000};
// The graph is given a second to complete before a stream is switched under it.
constexpr milliseconds kSwitchLimit{2500};
constexpr unsigned kSamplesPerSeek = 40;

// The pin may have lost its filter to a change of the pins.
bool IsFine(HRESULT result) { return result == S_OK || result == VFW_E_NOT_CONNECTED; }

}  // namespace

struct RandomController::Operation {
  const char* name;
  unsigned weight;
  bool needsGraph;  // changes its filters or its state
  void (RandomController::*perform)(Dice& dice);
  milliseconds limit = kLimit;
};

const RandomController::Operation& RandomController::Draw(Dice& dice) {
  static constexpr Operation kOperations[] = {
      {"seek", 36, false, &RandomController::Seek},
      {"set the rate", 2, false, &RandomController::SetRate},
      {"ask for positions", 4, false, &RandomController::AskPositions},
      {"run", 14, true, &RandomController::Run},
      {"pause", 7, true, &RandomController::Pause},
      {"stop", 7, true, &RandomController::Stop},
      {"select a stream", 6, true, &RandomController::SelectStream, kSwitchLimit},
      {"set start codes", 3, false, &RandomController::SetAnnexB},
      {"set separate pins", 3, false, &RandomController::SetSeparatePins},
      {"set the position", 4, false, &RandomController::SetPosition},
      {"ask for chapters", 2, false, &RandomController::AskChapters},
      {"close the source and open it or another", 3, true, &RandomController::Reopen, kSwitchLimit},
      {"disconnect a pin", 4, true, &RandomController::DisconnectPin},
      {"connect pins", 12, true, &RandomController::ConnectPins},
  };
  static const unsigned all = std::accumulate(std::begin(kOperations), std::end(kOperations), 0U,
                                              [](unsigned sum, const Operation& each) { return sum + each.weight; });
  unsigned drawn = dice(all);
  const Operation* operation = kOperations;
  while (drawn >= operation->weight) drawn -= (operation++)->weight;
  return *operation;
}

RandomController::RandomController(const std::string& path, ComPtr<IGraphBuilder> graph, Watchdog& dog, bool sinksSeek)
    : m_path(path), m_graph(CreateSplitter(), std::move(graph)), m_dog(dog), m_sinksSeek(sinksSeek) {
  EXPECT_EQ(OpenSource(path), S_OK);
  LONGLONG duration = 0;
  QueryFor<IMediaSeeking>(m_graph.OutputPins().front().Get())->GetDuration(&duration);
  m_duration = std::min<std::int64_t>(duration, 120000000);
}

RandomController::~RandomController() {
  m_graph.Stop();
  DropSinks(true);
  DropSources();
}

void RandomController::Perform(unsigned operations, unsigned seed) {
  Dice dice(seed);
  for (unsigned k = 0; k < operations && !m_dog.HasBarked(); ++k) {
    const Operation& operation = Draw(dice);
    {
      std::optional<CAutoLock> alone;
      if (operation.needsGraph && !GraphTakesThreads()) alone.emplace(m_graphLock);
      const Watchdog::Call call(m_dog, operation.name, operation.limit);
      (this->*operation.perform)(dice);
    }
    if (dice(3) == 0) SleepMilliseconds(dice(6));
  }
}

std::vector<std::size_t> RandomController::PlayToTheEnd() {
  m_sinksSeek = false;
  m_graph.Stop();
  DropSinks(true);
  DropSources();
  EXPECT_EQ(OpenSource(m_path), S_OK);
  for (const VARIANT_BOOL on : {VARIANT_FALSE, VARIANT_TRUE}) Set(paramSeparatePins, VT_BOOL, on);
  const auto pins = m_graph.OutputPins();
  Sinks sinks;
  for (const auto& pin : pins) sinks.push_back(Connect(pin.Get(), SinkKind::kCounting));
  LONGLONG zero = 0;
  const auto seeking = QueryFor<IMediaSeeking>(pins.front().Get());
  seeking->SetTimeFormat(&TIME_FORMAT_MEDIA_TIME);
  EXPECT_EQ(seeking->SetPositions(&zero, AM_SEEKING_AbsolutePositioning, &zero, AM_SEEKING_AbsolutePositioning), S_OK);
  EXPECT_TRUE(SUCCEEDED(m_graph.Run()));
  std::vector<std::size_t> counts;
  for (const auto& sink : sinks) {
    EXPECT_TRUE(sink->WaitForEnd(10 * kPatience)) << "the graph no longer plays to its end";
    counts.push_back(sink->CountOf(SinkEvent::Kind::kSample));
  }
  EXPECT_TRUE(SUCCEEDED(m_graph.Stop()));
  return counts;
}

int RandomController::SamplesAfterEnd() {
  const CAutoLock lock(m_lock);
  return std::accumulate(m_sinks.begin(), m_sinks.end(), m_afterEnd,
                         [](int sum, const auto& sink) { return sum + sink->AfterEnd(); });
}

ComPtr<IPin> RandomController::AnyPin(Dice& dice) const {
  const auto pins = m_graph.OutputPins();
  return pins.empty() ? nullptr : pins[dice(static_cast<unsigned>(pins.size()))];
}

ComPtr<IMediaSeeking> RandomController::AnySeeking(Dice& dice) const {
  const auto pin = AnyPin(dice);
  return pin ? pin.Query<IMediaSeeking>() : nullptr;
}

void RandomController::Seek(Dice& dice) {
  const auto seeking = AnySeeking(dice);
  if (!seeking) return;
  if (dice(5) == 0) seeking->SetTimeFormat(dice(2) == 0 ? &TIME_FORMAT_FRAME : &TIME_FORMAT_MEDIA_TIME);
  LONGLONG current = dice.Between(-m_duration / 4, m_duration * 5 / 4);
  LONGLONG stop = dice(2) == 0 ? 0 : dice.Between(0, m_duration);
  const DWORD mode = dice(3) == 0 ? dice(4) : static_cast<DWORD>(AM_SEEKING_AbsolutePositioning);
  const HRESULT result =
      seeking->SetPositions(dice(9) == 0 ? nullptr : &current, mode, dice(9) == 0 ? nullptr : &stop, dice(4));
  EXPECT_TRUE(IsFine(result)) << result;
}

void RandomController::SetRate(Dice& dice) {
  if (const auto seeking = AnySeeking(dice)) seeking->SetRate(0.5 * (1 + dice(4)));
}

void RandomController::AskPositions(Dice& dice) {
  const auto seeking = AnySeeking(dice);
  if (!seeking) return;
  LONGLONG current = 0;
  LONGLONG stop = 0;
  EXPECT_TRUE(IsFine(seeking->GetPositions(&current, &stop)));
  EXPECT_TRUE(IsFine(seeking->GetDuration(&stop)));
}

void RandomController::Run(Dice& /*dice*/) { m_graph.Run(); }
void RandomController::Pause(Dice& /*dice*/) { m_graph.Pause(); }
void RandomController::Stop(Dice& /*dice*/) { m_graph.Stop(); }

// A spare filter stands ready for what the switch renders.
void RandomController::SelectStream(Dice& dice) {
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

HRESULT RandomController::Set(const GUID& parameter, VARTYPE type, std::int64_t value) {
  VARIANT variant{};
  VariantInit(&variant);
  variant.vt = type;
  if (type == VT_BOOL) {
    variant.boolVal = static_cast<VARIANT_BOOL>(value);
  } else {
    variant.llVal = value;
  }
  ComPtr<IModuleConfig> config;
  const HRESULT result = m_graph.Splitter()->QueryInterface(IID_IModuleConfig, config.PutVoid());
  return FAILED(result) ? result : config->SetValue(&parameter, &variant);
}

void RandomController::SetAnnexB(Dice& dice) { EXPECT_EQ(Set(paramAnnexBOutput, VT_BOOL, dice(2)), S_OK); }

void RandomController::SetSeparatePins(Dice& dice) {
  const HRESULT result = Set(paramSeparatePins, VT_BOOL, dice(2));
  EXPECT_TRUE(result == S_OK || result == VFW_E_NOT_STOPPED) << result;
}

void RandomController::SetPosition(Dice& dice) { Set(paramPosition, VT_I8, dice.Between(0, m_duration)); }

void RandomController::AskChapters(Dice& dice) {
  const auto markers = QueryFor<IAMExtendedSeeking>(m_graph.Splitter());
  LONG count = 0;
  EXPECT_EQ(markers->get_MarkerCount(&count), S_OK);
  double seconds = 0;
  EXPECT_EQ(markers->GetMarkerTime(static_cast<LONG>(dice(8)), &seconds), S_OK);
}

void RandomController::Reopen(Dice& dice) {
  {
    const CAutoLock lock(m_sourceLock);
    m_graph.Stop();
    DropSources();
    OpenSource(dice(2) == 0 ? m_path : SystemPath(SourceDir() + "/tests/data/sample.mkv"));
  }
  ConnectPins(dice);
}

// Another thread may run the graph again at any moment, and then they stay.
void RandomController::DropSources() {
  m_input->Disconnect();
  std::erase_if(m_sources, [this](const auto& source) {
    AllPins(source.Get()).front()->Disconnect();
    return m_graph.Graph()->RemoveFilter(source.Get()) == S_OK;
  });
}

HRESULT RandomController::OpenSource(const std::string& path) {
  m_sources.push_back(CreateFileSource(path));
  IBaseFilter* source = m_sources.back().Get();
  const HRESULT result = m_graph.Graph()->AddFilter(source, OLESTR("Source"));
  return FAILED(result) ? result
                        : m_graph.Graph()->ConnectDirect(AllPins(source).front().Get(), m_input.Get(), nullptr);
}

void RandomController::DisconnectPin(Dice& dice) {
  const auto pin = AnyPin(dice);
  ComPtr<IPin> peer;
  if (!pin || FAILED(pin->ConnectedTo(peer.Put()))) return;
  // One side while it still runs, or both.
  if (FAILED(m_graph.Graph()->Disconnect(pin.Get()))) return;
  m_graph.Graph()->Disconnect(peer.Get());
  DropSinks(false);
}

void RandomController::ConnectPins(Dice& dice) {
  constexpr SinkKind kKinds[] = {SinkKind::kCounting, SinkKind::kSlow, SinkKind::kSlow, SinkKind::kBlocking};
  const auto pins = m_graph.OutputPins();
  if (std::all_of(pins.begin(), pins.end(), [](const auto& pin) { return IsConnected(pin.Get()); })) return;
  if (dice(2) == 0) m_graph.Stop();
  for (const auto& pin : pins) {
    if (!IsConnected(pin.Get()) && dice(6) != 0) Connect(pin.Get(), kKinds[dice(4)]);
  }
  DropSinks(false);
}

ComPtr<SinkFilter> RandomController::Connect(IPin* pin, SinkKind kind) {
  auto sink = SinkFilter::Create(kind);
  if (m_sinksSeek) {
    sink->OnSample(
        [this, seeking = QueryFor<IMediaSeeking>(pin)](IMediaSample* /*sample*/) { SeekFrom(seeking.Get()); });
  }
  m_graph.Graph()->AddFilter(sink.Get(), OLESTR("Sink"));
  if (SUCCEEDED(m_graph.Graph()->ConnectDirect(pin, sink->Pin(), nullptr))) {
    Keep(sink);
  } else {
    m_graph.Graph()->RemoveFilter(sink.Get());
  }
  return sink;
}

void RandomController::SeekFrom(IMediaSeeking* seeking) {
  const unsigned number = ++m_sinkSamples;
  if (!m_sinksSeek || number % kSamplesPerSeek != 0) return;
  const Watchdog::Call call(m_dog, "seek in Receive", kLimit);
  LONGLONG current = number * std::int64_t{77777} % m_duration;
  LONGLONG stop = 0;
  seeking->SetPositions(&current, AM_SEEKING_AbsolutePositioning, &stop, AM_SEEKING_AbsolutePositioning);
}

void RandomController::Keep(const ComPtr<SinkFilter>& sink) {
  const CAutoLock lock(m_lock);
  m_sinks.push_back(sink);
}

void RandomController::DropSinks(bool connectedToo) {
  Sinks dropped;
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
      const CAutoLock lock(m_lock);
      m_afterEnd += sink->AfterEnd();
    }
  }
}

}  // namespace tarvex::test
