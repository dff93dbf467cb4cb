#include "host/graph/graph_session.h"

#include "framework/filter_pins.h"
#include "host/graph/pin_queries.h"
#include "host/system/host_error.h"
#include "host/system/input_file.h"
#include "host/system/result_text.h"
#include "include/tarvex/module_config.h"

namespace tarvex::host {

namespace {

template <class T>
ComPtr<T> CreatePlatformObject(REFCLSID clsid, const char* what) {
  ComPtr<T> object;
  const HRESULT result = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IidOf<T>(), object.PutVoid());
  if (FAILED(result)) throw HostError(ExitCode::kInternal, std::string("no ") + what + ": " + ResultText(result));
  return object;
}

ComPtr<IPin> OnlyPin(IBaseFilter* filter, PIN_DIRECTION direction) {
  const auto pins = PinsOf(filter, direction);
  if (pins.empty()) throw HostError(ExitCode::kInternal, "a filter of the source side has no pin");
  return pins.front();
}

void DisconnectPins(IFilterGraph* graph, IBaseFilter* filter, PIN_DIRECTION direction) {
  for (const auto& pin : PinsOf(filter, direction)) {
    ComPtr<IPin> peer;
    if (FAILED(pin->ConnectedTo(peer.Put()))) continue;
    graph->Disconnect(peer.Get());
    graph->Disconnect(pin.Get());
  }
}

void SwitchOn(IBaseFilter* splitter, const GUID& parameter, const char* what) {
  ComPtr<IModuleConfig> config;
  VARIANT value{};
  value.vt = VT_BOOL;
  value.boolVal = VARIANT_TRUE;
  if (FAILED(splitter->QueryInterface(IID_IModuleConfig, config.PutVoid())) ||
      FAILED(config->SetValue(&parameter, &value))) {
    throw HostError(ExitCode::kInternal, std::string("the splitter does not take its setting for ") + what);
  }
}

}  // namespace

GraphSession::GraphSession(const SessionOptions& options)
    : m_options(options), m_path(FullPath(options.file)), m_module(options.module), m_listener(options.logFile) {
  RequireReadable(m_path, m_options.file);
  m_graph = CreatePlatformObject<IGraphBuilder>(CLSID_FilterGraph, "filter graph");
  try {
    OpenFile();
  } catch (...) {
    RemoveAll();
    throw;
  }
}

GraphSession::~GraphSession() {
  Stop();
  RemoveAll();
}

void GraphSession::OpenFile() {
  m_splitter = m_module.CreateSplitter();
  m_listener.Attach(m_splitter.Get());
  SetSettings();
  Add(m_splitter.Get(), L"Matroska splitter");
  m_source = CreatePlatformObject<IBaseFilter>(CLSID_AsyncReader, "file reader");
  const auto file = m_source.Query<IFileSourceFilter>();
  const HRESULT result = file ? file->Load(m_path.c_str(), nullptr) : E_NOINTERFACE;
  if (FAILED(result)) {
    throw HostError(ExitCode::kNoSuchFile, m_options.file + ": the file reader cannot load it: " + ResultText(result));
  }
  Add(m_source.Get(), L"File reader");
  ConnectSource();
}

void GraphSession::SetSettings() {
  if (m_options.separatePins) SwitchOn(m_splitter.Get(), paramSeparatePins, "separate pins");
  if (m_options.annexB) SwitchOn(m_splitter.Get(), paramAnnexBOutput, "start codes");
}

void GraphSession::ConnectSource() {
  const auto output = OnlyPin(m_source.Get(), PINDIR_OUTPUT);
  const auto input = OnlyPin(m_splitter.Get(), PINDIR_INPUT);
  m_listener.Forget();
  const HRESULT result = m_graph->ConnectDirect(output.Get(), input.Get(), nullptr);
  if (FAILED(result)) Refuse(result);
}

// The module says why in its log: its result code is the same for every reason.
void GraphSession::Refuse(HRESULT result) {
  if (!BeginsLikeMatroska(m_path)) throw HostError(ExitCode::kNotMatroska, m_options.file + ": not a Matroska file");
  const std::string text = m_listener.Refusal();
  throw HostError(ExitCode::kRefused, m_options.file + ": refused: " + (text.empty() ? ResultText(result) : text));
}

std::vector<ComPtr<IPin>> GraphSession::OutputPins() const { return PinsOf(m_splitter.Get(), PINDIR_OUTPUT); }

void GraphSession::Add(IBaseFilter* filter, const OLECHAR* name) {
  const HRESULT result = m_graph->AddFilter(filter, name);
  if (FAILED(result)) throw HostError(ExitCode::kPlayback, "the graph takes no filter: " + ResultText(result));
}

void GraphSession::AddAndConnect(IBaseFilter* filter, const OLECHAR* name, IPin* output, IPin* input) {
  Add(filter, name);
  const HRESULT result = m_graph->ConnectDirect(output, input, nullptr);
  if (SUCCEEDED(result)) return;
  Remove(filter);
  throw HostError(ExitCode::kPlayback,
                  m_options.file + ": " + PinName(output) + " cannot be connected: " + ResultText(result));
}

void GraphSession::Remove(IBaseFilter* filter) noexcept {
  DisconnectPins(m_graph.Get(), filter, PINDIR_OUTPUT);
  DisconnectPins(m_graph.Get(), filter, PINDIR_INPUT);
  m_graph->RemoveFilter(filter);
}

void GraphSession::RunWithoutClock() {
  const auto filter = m_graph.Query<IMediaFilter>();
  if (filter) filter->SetSyncSource(nullptr);
}

void GraphSession::ShareClock() noexcept {
  const auto filter = m_graph.Query<IMediaFilter>();
  ComPtr<IReferenceClock> clock;
  if (filter && SUCCEEDED(filter->GetSyncSource(clock.Put())) && clock) filter->SetSyncSource(clock.Get());
}

void GraphSession::Run() {
  const auto control = m_graph.Query<IMediaControl>();
  const HRESULT result = control ? control->Run() : E_NOINTERFACE;
  if (FAILED(result)) throw HostError(ExitCode::kPlayback, m_options.file + ": cannot run: " + ResultText(result));
}

void GraphSession::Pause() {
  const auto control = m_graph.Query<IMediaControl>();
  const HRESULT result = control ? control->Pause() : E_NOINTERFACE;
  if (FAILED(result)) throw HostError(ExitCode::kPlayback, m_options.file + ": cannot pause: " + ResultText(result));
}

void GraphSession::Stop() noexcept {
  if (!m_graph) return;
  const auto control = m_graph.Query<IMediaControl>();
  if (control) control->Stop();
}

// Downstream filters go first: a splitter that loses its source drops the pins they are connected to.
// The list is made anew after each, since removing changes it.
void GraphSession::RemoveAll() noexcept {
  m_listener.Detach();
  ComPtr<IEnumFilters> list;
  ComPtr<IBaseFilter> filter;
  std::vector<ComPtr<IBaseFilter>> others;
  if (SUCCEEDED(m_graph->EnumFilters(list.Put()))) {
    while (list->Next(1, filter.Put(), nullptr) == S_OK) {
      if (!(filter == m_splitter) && !(filter == m_source)) others.push_back(filter);
    }
  }
  for (const auto& other : others) Remove(other.Get());
  if (m_splitter) Remove(m_splitter.Get());
  if (m_source) Remove(m_source.Get());
}

}  // namespace tarvex::host
