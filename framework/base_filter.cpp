// The base of a filter: state, clock, graph, and the walk over its pins.
#include "framework/base_filter.h"

#include <algorithm>

#include "framework/base_pin.h"
#include "framework/co_task_mem.h"
#include "framework/com_boundary.h"
#include "framework/enum_pins.h"

namespace tarvex {

CBaseFilter::CBaseFilter(const char* objectName, IUnknown* outer, CCritSec* lock, const CLSID& clsid)
    : UnknownImpl(objectName, outer), m_pLock(lock), m_clsid(clsid) {}

CBaseFilter::~CBaseFilter() = default;

HRESULT STDMETHODCALLTYPE CBaseFilter::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IBaseFilter || iid == IID_IMediaFilter || iid == IID_IPersist) {
    return GiveInterface(static_cast<IBaseFilter*>(this), out);
  }
  if (iid == IID_IAMovieSetup) return GiveInterface(static_cast<IAMovieSetup*>(this), out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE CBaseFilter::GetClassID(CLSID* pClassID) {
  if (pClassID == nullptr) return E_POINTER;
  *pClassID = m_clsid;
  return S_OK;
}

// Deactivates the connected ones of the first `count` pins; `result` keeps the first failure.
void CBaseFilter::DeactivatePins(int count, HRESULT& result) {
  for (int i = 0; i < count; ++i) {
    CBasePin* pin = GetPin(i);
    if (pin == nullptr || !pin->IsConnected()) continue;
    const HRESULT hr = pin->Inactive();
    if (FAILED(hr) && SUCCEEDED(result)) result = hr;
  }
}

HRESULT STDMETHODCALLTYPE CBaseFilter::Stop() {
  return ComBoundary([&] {
    const CAutoLock hold(m_pLock);
    HRESULT result = S_OK;
    if (m_State != State_Stopped) DeactivatePins(GetPinCount(), result);
    m_State = State_Stopped;
    return result;
  });
}

HRESULT STDMETHODCALLTYPE CBaseFilter::Pause() {
  return ComBoundary([&] {
    const CAutoLock hold(m_pLock);
    if (m_State == State_Stopped) {
      const int count = GetPinCount();
      for (int i = 0; i < count; ++i) {
        CBasePin* pin = GetPin(i);
        if (pin == nullptr || !pin->IsConnected()) continue;
        const HRESULT hr = pin->Active();
        if (SUCCEEDED(hr)) continue;
        HRESULT ignored = S_OK;
        DeactivatePins(i, ignored);
        return hr;
      }
    }
    m_State = State_Paused;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CBaseFilter::Run(REFERENCE_TIME tStart) {
  return ComBoundary([&] {
    const CAutoLock hold(m_pLock);
    if (m_State == State_Stopped) {
      // Through the interface, so that a derived class's Pause has its part.
      const HRESULT hr = Pause();
      if (FAILED(hr)) return hr;
    }
    if (m_State != State_Running) {
      const int count = GetPinCount();
      for (int i = 0; i < count; ++i) {
        CBasePin* pin = GetPin(i);
        if (pin == nullptr || !pin->IsConnected()) continue;
        const HRESULT hr = pin->Run(tStart);
        if (FAILED(hr)) return hr;
      }
    }
    m_State = State_Running;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CBaseFilter::GetState(DWORD /*dwMilliSecsTimeout*/, FILTER_STATE* State) {
  if (State == nullptr) return E_POINTER;
  *State = m_State;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::SetSyncSource(IReferenceClock* pClock) {
  ComPtr<IReferenceClock> clock(pClock);
  const CAutoLock hold(m_pLock);
  m_pClock.Swap(clock);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::GetSyncSource(IReferenceClock** pClock) {
  if (pClock == nullptr) return E_POINTER;
  const CAutoLock hold(m_pLock);
  m_pClock.CopyTo(pClock);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::EnumPins(IEnumPins** ppEnum) {
  if (ppEnum == nullptr) return E_POINTER;
  *ppEnum = nullptr;
  return ComBoundary([&] {
    *ppEnum = MakeCom<CEnumPins>(this).Detach();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CBaseFilter::FindPin(LPCWSTR Id, IPin** ppPin) {
  if (ppPin == nullptr) return E_POINTER;
  *ppPin = nullptr;
  if (Id == nullptr) return E_POINTER;
  return ComBoundary([&] {
    const CAutoLock hold(m_pLock);
    const int count = GetPinCount();
    for (int i = 0; i < count; ++i) {
      CBasePin* pin = GetPin(i);
      if (pin == nullptr || pin->Name() != Id) continue;
      ComPtr<IPin>(pin).CopyTo(ppPin);
      return S_OK;
    }
    return VFW_E_NOT_FOUND;
  });
}

HRESULT STDMETHODCALLTYPE CBaseFilter::QueryFilterInfo(FILTER_INFO* pInfo) {
  if (pInfo == nullptr) return E_POINTER;
  const CAutoLock hold(m_graphLock);
  const std::size_t length = std::min<std::size_t>(m_name.size(), MAX_FILTER_NAME - 1);
  std::copy_n(m_name.begin(), length, pInfo->achName);
  pInfo->achName[length] = OLECHAR{};
  pInfo->pGraph = m_graph;
  if (m_graph != nullptr) m_graph->AddRef();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pName) {
  return ComBoundary([&] {
    WideString name(pName != nullptr ? pName : OLESTR(""));
    // The graph outlives our membership, so its sink needs no reference either.
    IMediaEventSink* sink = QueryFor<IMediaEventSink>(pGraph).Get();
    const CAutoLock hold(m_graphLock);
    m_graph = pGraph;
    m_sink = sink;
    m_name.swap(name);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CBaseFilter::QueryVendorInfo(LPWSTR* pVendorInfo) {
  if (pVendorInfo != nullptr) *pVendorInfo = nullptr;
  return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::Register() {
  const FilterSetup* setup = GetSetupData();
  return setup == nullptr ? S_FALSE : RegisterFilterSetup(*setup, true);
}

HRESULT STDMETHODCALLTYPE CBaseFilter::Unregister() {
  const FilterSetup* setup = GetSetupData();
  return setup == nullptr ? S_FALSE : RegisterFilterSetup(*setup, false);
}

HRESULT CBaseFilter::NotifyEvent(LONG code, LONG_PTR parameter1, LONG_PTR parameter2) {
  ComPtr<IMediaEventSink> sink;
  {
    const CAutoLock hold(m_graphLock);
    sink = ComPtr<IMediaEventSink>(m_sink);
  }
  if (!sink) return E_NOTIMPL;
  if (code == EC_COMPLETE) parameter2 = reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this));
  return sink->Notify(code, parameter1, parameter2);
}

ComPtr<IFilterGraph> CBaseFilter::GetFilterGraph() {
  const CAutoLock hold(m_graphLock);
  return ComPtr<IFilterGraph>(m_graph);
}

}  // namespace tarvex
