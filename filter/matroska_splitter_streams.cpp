// Stream selection: IAMStreamSelect, application threads.
#include <algorithm>
#include <utility>

#include "filter/matroska_splitter.h"
#include "filter/rendered_graph.h"
#include "filter/stream_name.h"
#include "framework/co_task_mem.h"
#include "framework/com_boundary.h"

namespace tarvex {

HRESULT CMatroskaSplitter::Count(DWORD* pcStreams) {
  if (pcStreams == nullptr) return E_POINTER;
  const CAutoLock lock(m_filterLock);
  *pcStreams = static_cast<DWORD>(m_creator.GetStreamCount());
  return S_OK;
}

HRESULT CMatroskaSplitter::Info(LONG lIndex, AM_MEDIA_TYPE** /*ppmt*/, DWORD* pdwFlags, LCID* plcid, DWORD* pdwGroup,
                                WCHAR** ppszName, IUnknown** ppObject, IUnknown** ppUnk) {
  return ComBoundary([&]() -> HRESULT {
    const CAutoLock lock(m_filterLock);
    TrackPinInfo track;
    if (lIndex < 0 || !m_creator.GetTrackInfoByIndex(static_cast<std::uint32_t>(lIndex), track)) return S_FALSE;
    // First what can fail, so that a failure gives nothing out.
    CoTaskMem<OLECHAR> name;
    if (ppszName != nullptr) name = TaskString(StreamName(track));

    if (plcid != nullptr) *plcid = 0;
    if (ppUnk != nullptr) *ppUnk = nullptr;
    if (ppObject != nullptr) ComPtr<IUnknown>(Owner()).CopyTo(ppObject);
    if (pdwFlags != nullptr) {
      *pdwFlags = FindPinByTrack(track.trackNumber) != nullptr ? AMSTREAMSELECTINFO_ENABLED : 0;
    }
    if (pdwGroup != nullptr) *pdwGroup = track.trackType;
    if (ppszName != nullptr) *ppszName = name.Detach();
    return S_OK;
  });
}

HRESULT CMatroskaSplitter::Enable(LONG lIndex, DWORD dwFlags) {
  if ((dwFlags & AMSTREAMSELECTENABLE_ENABLE) == 0) return E_NOTIMPL;
  if (lIndex < 0) return E_INVALIDARG;
  return ComBoundary([&]() -> HRESULT {
    const CAutoLock switching(m_switchLock);
    ComPtr<CMatroskaOutputPin> connectedPin;
    TrackPinInfo track;
    const HRESULT result = SwitchStream(static_cast<std::uint32_t>(lIndex), connectedPin, track);
    return connectedPin ? SwitchConnectedPin(*connectedPin, track) : result;
  });
}

// From pin creation, which holds the filter lock and whose pins nobody knows yet.
HRESULT CMatroskaSplitter::EnableStream(std::uint32_t streamIndex) {
  ComPtr<CMatroskaOutputPin> connectedPin;
  TrackPinInfo track;
  return SwitchStream(streamIndex, connectedPin, track);
}

// Does all of the switch that needs no graph; gives the pin when it is connected and so does.
HRESULT CMatroskaSplitter::SwitchStream(std::uint32_t streamIndex, ComPtr<CMatroskaOutputPin>& connectedPin,
                                        TrackPinInfo& track) {
  const CAutoLock lock(m_filterLock);
  if (!m_creator.GetTrackInfoByIndex(streamIndex, track)) return E_INVALIDARG;
  if (FindPinByTrack(track.trackNumber) != nullptr) return S_OK;
  CMatroskaOutputPin* pin = FindPinByType(track.trackType);
  if (pin == nullptr) return E_FAIL;  // every stream's kind has a pin
  if (!pin->IsConnected()) return pin->SetTrack(track);
  connectedPin = ComPtr<CMatroskaOutputPin>(pin);
  return S_OK;
}

// All that can fail for lack of memory comes before the graph is touched.
HRESULT CMatroskaSplitter::SwitchConnectedPin(CMatroskaOutputPin& pin, const TrackPinInfo& track) {
  RenderedGraph graph;
  const HRESULT result = graph.Attach(GetFilterGraph());
  if (FAILED(result)) return result;
  const TrackPinInfo former = pin.Track();
  const std::vector<ComPtr<IPin>> others = ConnectedOutputsBut(pin);
  graph.Save();
  graph.FindDownstream(&pin, this);
  const HRESULT switched = ComBoundary([&] {
    if (!graph.WasStopped()) {
      EndDelivery();
      graph.Stop();
    }
    if (IsActive()) return VFW_E_NOT_STOPPED;  // run by someone who goes past the graph
    graph.RemoveDownstream();
    if (FAILED(SetTrack(pin, track)) || FAILED(graph.Render(&pin))) {
      static_cast<void>(SetTrack(pin, former));
      static_cast<void>(graph.Render(&pin));
    }
    // A filter that mixes several of our streams went away with this one's.
    for (const auto& other : others) static_cast<void>(graph.Render(other.Get()));
    return S_OK;
  });
  const HRESULT restored = graph.Restore();
  return FAILED(switched) ? switched : restored;
}

HRESULT CMatroskaSplitter::SetTrack(CMatroskaOutputPin& pin, const TrackPinInfo& track) {
  const CAutoLock lock(m_filterLock);  // no connection in between
  return pin.SetTrack(track);
}

// What downstream has is dropped and ended, so that the graph completes at once.
void CMatroskaSplitter::EndDelivery() {
  const CAutoLock lock(m_positionLock);
  Interrupt();
  EndWorker();
  EndOfStream();
}

std::vector<ComPtr<IPin>> CMatroskaSplitter::ConnectedOutputsBut(const CMatroskaOutputPin& one) {
  const CAutoLock lock(m_filterLock);
  std::vector<ComPtr<IPin>> pins;
  for (const auto& pin : m_outputPins) {
    if (pin.Get() != &one && pin->IsConnected()) pins.emplace_back(pin.Get());
  }
  return pins;
}

}  // namespace tarvex
