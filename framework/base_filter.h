// The base of a filter: identity in a graph, state, clock, and the walk over its pins. Created through
// the class factory or by a host; its methods run on application threads under the filter's lock.
#pragma once

#include <atomic>

#include "framework/com_ptr.h"
#include "framework/critical_section.h"
#include "framework/filter_setup.h"
#include "framework/text_conversion.h"
#include "framework/unknown.h"

namespace tarvex {

class CBasePin;

class CBaseFilter : public UnknownImpl<IBaseFilter, IAMovieSetup> {
 public:
  /// `lock` guards the filter's state and its pins' connections; it belongs to the derived class and
  /// must outlive this object. `outer` is the aggregating object, or null.
  CBaseFilter(const char* objectName, IUnknown* outer, CCritSec* lock, const CLSID& clsid);
  ~CBaseFilter() override;

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassID) override;

  /// Deactivates every connected pin in index order. The filter is stopped afterwards whatever the
  /// pins answer; the first failure is returned.
  HRESULT STDMETHODCALLTYPE Stop() override;
  /// From stopped: activates every connected pin in index order; when one fails, the ones before it are
  /// deactivated again and the filter stays stopped.
  HRESULT STDMETHODCALLTYPE Pause() override;
  /// Pauses first when stopped, then tells every connected pin to run.
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME tStart) override;
  HRESULT STDMETHODCALLTYPE GetState(DWORD dwMilliSecsTimeout, FILTER_STATE* State) override;
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* pClock) override;
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** pClock) override;

  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** ppEnum) override;
  /// By the identifier that the pin's QueryId gives: its name. VFW_E_NOT_FOUND.
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR Id, IPin** ppPin) override;
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* pInfo) override;
  /// The graph is not counted, since it counts the filter. Null when the filter leaves its graph.
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pName) override;
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* pVendorInfo) override;

  HRESULT STDMETHODCALLTYPE Register() override;
  HRESULT STDMETHODCALLTYPE Unregister() override;

  /// Number of pins, null entries included. Called with the filter's lock held.
  virtual int GetPinCount() = 0;
  /// The pin with this index, or null. Not counted. Called with the filter's lock held.
  virtual CBasePin* GetPin(int index) = 0;
  /// What Register tells the filter mapper; null for nothing.
  virtual const FilterSetup* GetSetupData() { return nullptr; }

  /// Changes with every change of the pin list, so that enumerators notice.
  LONG GetPinVersion() const noexcept { return m_pinVersion; }
  void IncrementPinVersion() noexcept { ++m_pinVersion; }

  FILTER_STATE State() const noexcept { return m_State; }
  bool IsActive() const noexcept { return m_State != State_Stopped; }
  bool IsStopped() const noexcept { return m_State == State_Stopped; }
  CCritSec* FilterLock() const noexcept { return m_pLock; }

  /// Passes an event to the graph; E_NOTIMPL when there is none. Any thread; takes no lock that is held
  /// while a thread is waited for. For EC_COMPLETE the second parameter is set to this filter.
  HRESULT NotifyEvent(LONG code, LONG_PTR parameter1, LONG_PTR parameter2);

  /// The graph this filter is in, with a reference, or null.
  ComPtr<IFilterGraph> GetFilterGraph();

 protected:
  CCritSec* const m_pLock;
  std::atomic<FILTER_STATE> m_State{State_Stopped};  // written under the lock
  ComPtr<IReferenceClock> m_pClock;                  // under the lock

 private:
  void DeactivatePins(int count, HRESULT& result);

  const CLSID m_clsid;
  std::atomic<LONG> m_pinVersion{1};

  // Leaf: only pointer copies happen under it, so that any thread may notify.
  CCritSec m_graphLock{"CBaseFilter graph", LockRank::kLeaf};
  IFilterGraph* m_graph = nullptr;    // not counted: the graph counts us
  IMediaEventSink* m_sink = nullptr;  // the graph's, not counted for the same reason
  WideString m_name;
};

}  // namespace tarvex
