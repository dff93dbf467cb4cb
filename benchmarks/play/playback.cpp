// See playback.h.
#include "benchmarks/play/playback.h"

#include <stdexcept>

#include "framework/filter_pins.h"
#include "framework/text_conversion.h"
#include "include/tarvex/module_config.h"

namespace tarvex::bench {
namespace {

void Check(HRESULT result, const char* what) {
  if (SUCCEEDED(result)) return;
  throw std::runtime_error(std::string(what) + " failed with " + std::to_string(result));
}

ComPtr<IPin> OnlyPin(IBaseFilter* filter, PIN_DIRECTION direction) {
  const auto pins = PinsOf(filter, direction);
  if (pins.empty()) throw std::runtime_error("a filter has no pin");
  return pins.front();
}

std::string NameOf(IPin* pin) {
  PIN_INFO info{};
  Check(pin->QueryPinInfo(&info), "QueryPinInfo");
  const auto filter = ComPtr<IBaseFilter>::Attach(info.pFilter);
  return Utf8FromWide(info.achName);
}

}  // namespace

Playback::Playback(const std::string& path, SourceKind kind, bool separatePins, std::chrono::microseconds delay)
    : m_graph(NewGraph()), m_splitter(NewSplitter()) {
  try {
    if (separatePins) SeparatePins();
    MakeSource(path, kind, delay);
    Add(m_source.Get(), OLESTR("Source"));
    Add(m_splitter.Get(), OLESTR("Splitter"));
  } catch (...) {
    TakeDown();
    throw;
  }
}

Playback::~Playback() { TakeDown(); }

void Playback::SeparatePins() const {
  ComPtr<IModuleConfig> config;
  Check(m_splitter->QueryInterface(IID_IModuleConfig, config.PutVoid()), "asking for IModuleConfig");
  VARIANT value{};
  VariantInit(&value);
  value.vt = VT_BOOL;
  value.boolVal = VARIANT_TRUE;
  Check(config->SetValue(&paramSeparatePins, &value), "SetValue");
}

void Playback::MakeSource(const std::string& path, SourceKind kind, std::chrono::microseconds delay) {
  OpenedFile file = OpenFile(path);
  if (kind == SourceKind::kCounting) {
    m_counting = MakeCom<CountingSource>(std::move(file.reader), delay);
    m_source = m_counting;
  } else {
    m_source = std::move(file.filter);
  }
  if (!m_source) throw std::runtime_error("this platform has no file source of its own");
}

void Playback::Open() {
  Connect(OnlyPin(m_source.Get(), PINDIR_OUTPUT).Get(), OnlyPin(m_splitter.Get(), PINDIR_INPUT).Get());
}

void Playback::Add(IBaseFilter* filter, const OLECHAR* name) {
  if (m_graph) Check(m_graph->AddFilter(filter, name), "AddFilter");
}

void Playback::Connect(IPin* output, IPin* input) const {
  Check(m_graph ? m_graph->ConnectDirect(output, input, nullptr) : output->Connect(input, nullptr), "connecting");
}

void Playback::ConnectSinks(SinkManner manner) {
  m_outputs = PinsOf(m_splitter.Get(), PINDIR_OUTPUT);
  if (m_outputs.empty()) throw std::runtime_error("the file has no streams");
  m_monitor.Expect(m_counting.Get(), m_outputs.size());
  for (const ComPtr<IPin>& output : m_outputs) {
    m_sinks.push_back(MakeCom<CountingSink>(m_monitor, manner));
    m_names.push_back(NameOf(output.Get()));
    Add(m_sinks.back().Get(), OLESTR("Sink"));
    Connect(output.Get(), m_sinks.back()->Input());
  }
}

// Renderers first, the source last, as a graph does it.
void Playback::Run() {
  if (m_graph) return Check(m_graph.Query<IMediaControl>()->Run(), "Run");
  for (const ComPtr<CountingSink>& sink : m_sinks) Check(sink->Run(0), "Run of a sink");
  Check(m_splitter->Run(0), "Run of the splitter");
  Check(m_source->Run(0), "Run of the source");
}

void Playback::Stop() noexcept {
  if (m_graph) {
    if (const auto control = m_graph.Query<IMediaControl>()) control->Stop();
    return;
  }
  for (const ComPtr<CountingSink>& sink : m_sinks) sink->Stop();
  m_splitter->Stop();
  if (m_source) m_source->Stop();
}

ReadCount Playback::Reads() const noexcept { return m_counting ? m_counting->Reads() : ReadCount{}; }

ComPtr<IMediaSeeking> Playback::Seeking() const {
  auto seeking = m_outputs.at(0).Query<IMediaSeeking>();
  if (!seeking) throw std::runtime_error("the first pin has no IMediaSeeking");
  return seeking;
}

LONGLONG Playback::Duration() const {
  LONGLONG duration = 0;
  Check(Seeking()->GetDuration(&duration), "GetDuration");
  return duration;
}

void Playback::Seek(LONGLONG position) const {
  Check(Seeking()->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning),
        "SetPositions");
}

void Playback::TakeDown() noexcept {
  Stop();
  for (const ComPtr<IPin>& output : m_outputs) output->Disconnect();
  for (const ComPtr<CountingSink>& sink : m_sinks) sink->Input()->Disconnect();
  if (!m_graph) {
    const auto input = OnlyPin(m_splitter.Get(), PINDIR_INPUT);
    input->Disconnect();
    if (m_source) OnlyPin(m_source.Get(), PINDIR_OUTPUT)->Disconnect();
    return;
  }
  for (const ComPtr<CountingSink>& sink : m_sinks) m_graph->RemoveFilter(sink.Get());
  m_graph->RemoveFilter(m_splitter.Get());
  if (m_source) m_graph->RemoveFilter(m_source.Get());
}

}  // namespace tarvex::bench
