// See test_graph.h.
#include "tests/support/test_graph.h"

#include <algorithm>
#include <stdexcept>

#include "framework/text_conversion.h"
#include "include/tarvex/module_config.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

ComPtr<IPin> FirstPin(IBaseFilter* filter, PIN_DIRECTION direction) {
  for (const ComPtr<IPin>& pin : AllPins(filter)) {
    if (DirectionOf(pin.Get()) == direction) return pin;
  }
  return nullptr;
}

}  // namespace

std::vector<ComPtr<IPin>> AllPins(IBaseFilter* filter) {
  std::vector<ComPtr<IPin>> pins;
  ComPtr<IEnumPins> list;
  if (FAILED(filter->EnumPins(list.Put()))) throw std::runtime_error("no pin list");
  ComPtr<IPin> pin;
  HRESULT result = S_OK;
  while ((result = list->Next(1, pin.Put(), nullptr)) == S_OK) pins.push_back(pin);
  return result == VFW_E_ENUM_OUT_OF_SYNC ? AllPins(filter) : pins;  // another thread has changed them
}

PIN_DIRECTION DirectionOf(IPin* pin) {
  PIN_DIRECTION direction = PINDIR_INPUT;
  pin->QueryDirection(&direction);
  return direction;
}

std::string NameOf(IPin* pin) {
  PIN_INFO info{};
  if (FAILED(pin->QueryPinInfo(&info))) return {};
  const auto filter = ComPtr<IBaseFilter>::Attach(info.pFilter);
  return Utf8FromWide(info.achName);
}

bool IsConnected(IPin* pin) {
  ComPtr<IPin> peer;
  return SUCCEEDED(pin->ConnectedTo(peer.Put())) && peer;
}

TestGraph::TestGraph() : TestGraph(CreateSplitter()) {}

TestGraph::TestGraph(ComPtr<IBaseFilter> splitter, ComPtr<IGraphBuilder> graph)
    : m_graph(graph ? std::move(graph) : CreateFilterGraph()), m_splitter(std::move(splitter)) {
  m_control = m_graph.Query<IMediaControl>();
  if (!m_control) throw std::runtime_error("the graph has no IMediaControl");
  if (FAILED(m_graph->AddFilter(m_splitter.Get(), OLESTR("Splitter")))) throw std::runtime_error("AddFilter");
}

TestGraph::~TestGraph() {
  if (!m_graph) return;
  Stop();
  DisconnectAll();
  for (const ComPtr<SinkFilter>& sink : m_sinks) m_graph->RemoveFilter(sink.Get());
  m_graph->RemoveFilter(m_splitter.Get());
  if (m_source) m_graph->RemoveFilter(m_source.Get());
}

HRESULT TestGraph::SeparatePins(bool on) {
  ComPtr<IModuleConfig> config;
  const HRESULT result = m_splitter->QueryInterface(IID_IModuleConfig, config.PutVoid());
  if (FAILED(result)) return result;
  VARIANT value{};
  VariantInit(&value);
  value.vt = VT_BOOL;
  value.boolVal = on ? VARIANT_TRUE : VARIANT_FALSE;
  return config->SetValue(&paramSeparatePins, &value);
}

HRESULT TestGraph::Open(const std::string& path) { return Open(CreateFileSource(path).Get()); }

HRESULT TestGraph::Open(IBaseFilter* source) {
  m_source = ComPtr<IBaseFilter>(source);
  const HRESULT result = m_graph->AddFilter(source, OLESTR("Source"));
  if (FAILED(result)) return result;
  return m_graph->ConnectDirect(FirstPin(source, PINDIR_OUTPUT).Get(), InputPin().Get(), nullptr);
}

HRESULT TestGraph::CloseSource() {
  if (!m_source) return S_FALSE;
  InputPin()->Disconnect();
  FirstPin(m_source.Get(), PINDIR_OUTPUT)->Disconnect();
  const HRESULT result = m_graph->RemoveFilter(m_source.Get());
  m_source.Reset();
  return result;
}

ComPtr<IPin> TestGraph::InputPin() const { return FirstPin(m_splitter.Get(), PINDIR_INPUT); }

std::vector<ComPtr<IPin>> TestGraph::OutputPins() const {
  std::vector<ComPtr<IPin>> pins = AllPins(m_splitter.Get());
  std::erase_if(pins, [](const ComPtr<IPin>& pin) { return DirectionOf(pin.Get()) != PINDIR_OUTPUT; });
  return pins;
}

HRESULT TestGraph::ConnectSinks(SinkKind kind) {
  for (const ComPtr<IPin>& pin : OutputPins()) {
    if (IsConnected(pin.Get())) continue;
    const HRESULT result = ConnectSink(pin.Get(), kind);
    if (FAILED(result)) return result;
  }
  return S_OK;
}

HRESULT TestGraph::ConnectSink(IPin* pin, SinkKind kind) {
  const ComPtr<SinkFilter> sink = SinkFilter::Create(kind);
  m_sinks.push_back(sink);
  const HRESULT result = m_graph->AddFilter(sink.Get(), OLESTR("Sink"));
  return FAILED(result) ? result : m_graph->ConnectDirect(pin, sink->Pin(), nullptr);
}

HRESULT TestGraph::Run() { return m_control->Run(); }

HRESULT TestGraph::Pause() { return m_control->Pause(); }

HRESULT TestGraph::Stop() { return m_control->Stop(); }

bool TestGraph::WaitForEnd(DWORD milliseconds) const {
  const ULONGLONG begin = MonotonicMilliseconds();
  return std::ranges::all_of(m_sinks, [&](const ComPtr<SinkFilter>& sink) {
    const ULONGLONG passed = MonotonicMilliseconds() - begin;
    return sink->WaitForEnd(passed < milliseconds ? milliseconds - static_cast<DWORD>(passed) : 0);
  });
}

// Asked again and again: a graph may answer that there is nothing before the time is over.
bool TestGraph::WaitForEvent(LONG code, DWORD milliseconds) const {
  constexpr LONG kInterval = 20;  // milliseconds
  const ULONGLONG begin = MonotonicMilliseconds();
  const ComPtr<IMediaEvent> events = m_graph.Query<IMediaEvent>();
  while (events && MonotonicMilliseconds() - begin < milliseconds) {
    LONG found = 0;
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    if (FAILED(events->GetEvent(&found, &first, &second, kInterval))) continue;
    events->FreeEventParams(found, first, second);
    if (found == code) return true;
  }
  return false;
}

// The ends hold on to the splitter's pins, and those to them: a circle that only the ends can open.
void TestGraph::Abandon() {
  for (const ComPtr<SinkFilter>& sink : m_sinks) sink->Pin()->Forget();
  static_cast<SourceFilter&>(*m_source).Pin()->Forget();
  m_sinks.clear();
  m_source.Reset();
  m_splitter.Reset();
  m_control.Reset();
  m_graph.Reset();
}

HRESULT TestGraph::DisconnectAll() {
  HRESULT result = S_OK;
  const auto disconnect = [&result](IPin* pin) {
    const HRESULT answer = pin->Disconnect();
    if (FAILED(answer)) result = answer;
  };
  for (const ComPtr<SinkFilter>& sink : m_sinks) sink->Pin()->Disconnect();
  for (const ComPtr<IPin>& pin : OutputPins()) disconnect(pin.Get());
  disconnect(InputPin().Get());
  if (m_source) FirstPin(m_source.Get(), PINDIR_OUTPUT)->Disconnect();
  return result;
}

}  // namespace tarvex::test
