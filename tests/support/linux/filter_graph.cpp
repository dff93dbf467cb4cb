// See filter_graph.h.
#include "tests/support/linux/filter_graph.h"

#include <algorithm>

#include "tests/support/test_graph.h"

namespace tarvex::test {

FilterGraph::~FilterGraph() {
  for (const ComPtr<IBaseFilter>& filter : m_filters) filter->JoinFilterGraph(nullptr, nullptr);
}

HRESULT STDMETHODCALLTYPE FilterGraph::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IFilterGraph || iid == IID_IGraphBuilder) return GiveInterface(static_cast<IGraphBuilder*>(this), out);
  if (iid == IID_IMediaControl) return GiveInterface(static_cast<IMediaControl*>(this), out);
  if (iid == IID_IMediaEvent) return GiveInterface(static_cast<IMediaEvent*>(this), out);
  if (iid == IID_IMediaEventSink) return GiveInterface(static_cast<IMediaEventSink*>(this), out);
  if (iid == IID_IMediaSeeking) return FindSeeking(out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

HRESULT FilterGraph::FindSeeking(void** out) {
  const CAutoLock lock(m_lock);
  for (const ComPtr<IBaseFilter>& filter : m_filters) {
    for (const ComPtr<IPin>& pin : AllPins(filter.Get())) {
      if (SUCCEEDED(pin->QueryInterface(IID_IMediaSeeking, out))) return S_OK;
    }
  }
  *out = nullptr;
  return E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE FilterGraph::AddFilter(IBaseFilter* pFilter, LPCWSTR pName) {
  const CAutoLock lock(m_lock);
  const HRESULT result = pFilter->JoinFilterGraph(static_cast<IGraphBuilder*>(this), pName);
  if (SUCCEEDED(result)) m_filters.emplace_back(pFilter);
  return result;
}

HRESULT STDMETHODCALLTYPE FilterGraph::RemoveFilter(IBaseFilter* pFilter) {
  const CAutoLock lock(m_lock);
  const auto found = std::find_if(m_filters.begin(), m_filters.end(),
                                  [pFilter](const ComPtr<IBaseFilter>& filter) { return filter.Get() == pFilter; });
  if (found == m_filters.end()) return E_FAIL;
  for (const ComPtr<IPin>& pin : AllPins(pFilter)) {
    ComPtr<IPin> peer;
    if (FAILED(pin->ConnectedTo(peer.Put()))) continue;
    if (m_state != State_Stopped) return VFW_E_NOT_STOPPED;
    peer->Disconnect();
    pin->Disconnect();
  }
  pFilter->JoinFilterGraph(nullptr, nullptr);
  m_filters.erase(found);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE FilterGraph::ConnectDirect(IPin* ppinOut, IPin* ppinIn, const AM_MEDIA_TYPE* pmt) {
  const CAutoLock lock(m_lock);
  return ppinOut->Connect(ppinIn, pmt);
}

HRESULT STDMETHODCALLTYPE FilterGraph::Disconnect(IPin* ppin) {
  const CAutoLock lock(m_lock);
  return ppin->Disconnect();
}

template <class Change>
HRESULT FilterGraph::ChangeState(OAFilterState state, Change change) {
  const CAutoLock lock(m_lock);
  HRESULT result = S_OK;
  std::for_each(m_filters.rbegin(), m_filters.rend(), [&](const ComPtr<IBaseFilter>& filter) {
    const HRESULT one = change(*filter);
    if (FAILED(one) && SUCCEEDED(result)) result = one;
  });
  m_state = state;
  return result;
}

// Renderers stand at the end and change first, so that they are ready for what comes.
HRESULT STDMETHODCALLTYPE FilterGraph::Pause() {
  return ChangeState(State_Paused, [](IBaseFilter& filter) { return filter.Pause(); });
}

HRESULT STDMETHODCALLTYPE FilterGraph::Run() {
  const CAutoLock lock(m_lock);
  const HRESULT paused = m_state == State_Stopped ? Pause() : S_OK;
  if (FAILED(paused)) return paused;
  return ChangeState(State_Running, [](IBaseFilter& filter) { return filter.Run(0); });
}

HRESULT STDMETHODCALLTYPE FilterGraph::Stop() {
  return ChangeState(State_Stopped, [](IBaseFilter& filter) { return filter.Stop(); });
}

HRESULT STDMETHODCALLTYPE FilterGraph::GetState(LONG /*msTimeout*/, OAFilterState* pfs) {
  *pfs = m_state;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE FilterGraph::Notify(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2) {
  const CAutoLock lock(m_eventLock);
  m_events.push_back({EventCode, EventParam1, EventParam2});
  m_notified.Set();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE FilterGraph::GetEvent(LONG* lEventCode, LONG_PTR* lParam1, LONG_PTR* lParam2,
                                                LONG msTimeout) {
  do {
    const CAutoLock lock(m_eventLock);
    if (m_events.empty()) continue;
    *lEventCode = m_events.front().code;
    *lParam1 = m_events.front().first;
    *lParam2 = m_events.front().second;
    m_events.pop_front();
    return S_OK;
  } while (m_notified.Wait(static_cast<DWORD>(msTimeout)));
  return E_ABORT;
}

HRESULT STDMETHODCALLTYPE FilterGraph::Render(IPin* ppinOut) {
  const CAutoLock lock(m_lock);
  for (const ComPtr<IBaseFilter>& filter : m_filters) {
    for (const ComPtr<IPin>& pin : AllPins(filter.Get())) {
      if (DirectionOf(pin.Get()) != PINDIR_INPUT || IsConnected(pin.Get())) continue;
      if (SUCCEEDED(ppinOut->Connect(pin.Get(), nullptr))) return S_OK;
    }
  }
  return VFW_E_CANNOT_RENDER;
}

}  // namespace tarvex::test
