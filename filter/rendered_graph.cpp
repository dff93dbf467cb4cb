// Calls of the graph around a switch of streams.
#include "filter/rendered_graph.h"

#include <algorithm>
#include <utility>

#include "framework/filter_pins.h"

namespace tarvex {

namespace {

constexpr LONG kStatePatience = 1000;       // milliseconds
constexpr LONG kCompletionPatience = 1000;  // milliseconds

// The filter that a pin's data goes to; null for an input pin or an unconnected one.
ComPtr<IBaseFilter> FilterFedBy(IPin* pin) {
  PIN_DIRECTION direction = PINDIR_INPUT;
  ComPtr<IPin> peer;
  if (FAILED(pin->QueryDirection(&direction)) || direction != PINDIR_OUTPUT) return nullptr;
  if (FAILED(pin->ConnectedTo(peer.Put()))) return nullptr;
  PIN_INFO info{};
  if (FAILED(peer->QueryPinInfo(&info))) return nullptr;
  return ComPtr<IBaseFilter>::Attach(info.pFilter);
}

class DownstreamFilters {
 public:
  explicit DownstreamFilters(IBaseFilter* owner) : m_owner(owner) {}

  void AddFrom(IPin* pin) {
    ComPtr<IBaseFilter> filter = FilterFedBy(pin);
    if (!filter || IsSameObject(filter.Get(), m_owner) || IsKnown(filter.Get())) return;
    m_filters.push_back(filter);
    for (const auto& output : PinsOf(filter.Get())) AddFrom(output.Get());
  }
  const std::vector<ComPtr<IBaseFilter>>& All() const { return m_filters; }

 private:
  bool IsKnown(IBaseFilter* filter) const {
    return std::any_of(m_filters.begin(), m_filters.end(),
                       [filter](const auto& known) { return IsSameObject(known.Get(), filter); });
  }

  IBaseFilter* m_owner;
  std::vector<ComPtr<IBaseFilter>> m_filters;
};

}  // namespace

HRESULT RenderedGraph::Attach(const ComPtr<IFilterGraph>& graph) {
  if (!graph) return VFW_E_NOT_IN_GRAPH;
  const HRESULT result = graph.Query(m_builder);
  if (FAILED(result)) return result;
  m_seeking = graph.Query<IMediaSeeking>();
  return graph.Query(m_control);
}

void RenderedGraph::Save() {
  // The state asked for counts, also when the graph is still on its way to it.
  if (FAILED(m_control->GetState(kStatePatience, &m_state))) m_state = State_Stopped;
  SavePositions();
}

void RenderedGraph::SavePositions() {
  if (!m_seeking || FAILED(m_seeking->GetPositions(&m_current, &m_stop))) return;
  m_hasPositions = true;
  LONGLONG current = 0;
  if (SUCCEEDED(m_seeking->GetCurrentPosition(&current))) m_current = current;
}

void RenderedGraph::Stop() {
  const ComPtr<IMediaEvent> events = m_control.Query<IMediaEvent>();
  LONG code = 0;
  if (events && m_state == State_Running) static_cast<void>(events->WaitForCompletion(kCompletionPatience, &code));
  static_cast<void>(m_control->Stop());
}

void RenderedGraph::FindDownstream(IPin* pin, IBaseFilter* owner) {
  DownstreamFilters downstream(owner);
  downstream.AddFrom(pin);
  m_downstream = downstream.All();
}

void RenderedGraph::RemoveDownstream() {
  for (const auto& filter : m_downstream) {
    DisconnectAll(filter.Get());
    static_cast<void>(m_builder->RemoveFilter(filter.Get()));
  }
}

void RenderedGraph::DisconnectAll(IBaseFilter* filter) {
  for (const auto& pin : PinsOf(filter)) {
    ComPtr<IPin> peer;
    if (FAILED(pin->ConnectedTo(peer.Put()))) continue;
    static_cast<void>(m_builder->Disconnect(peer.Get()));
    static_cast<void>(m_builder->Disconnect(pin.Get()));
  }
}

HRESULT RenderedGraph::Render(IPin* pin) { return IsConnected(pin) ? S_OK : m_builder->Render(pin); }

HRESULT RenderedGraph::Restore() noexcept {
  if (WasStopped()) return S_OK;
  if (m_hasPositions) {
    static_cast<void>(
        m_seeking->SetPositions(&m_current, AM_SEEKING_AbsolutePositioning, &m_stop, AM_SEEKING_AbsolutePositioning));
  }
  const HRESULT result = m_state == State_Running ? m_control->Run() : m_control->Pause();
  return FAILED(result) ? result : S_OK;  // still on its way is well
}

}  // namespace tarvex
