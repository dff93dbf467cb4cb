// A small filter graph for the build that has none from its platform: holds filters, connects pins
// directly, changes states from the last filter added to the first, and queues events. Owned through
// ComPtr by a test. Renders a pin into a filter that is there for it, and answers for positions with the
// first pin that knows them.
#pragma once

#include <deque>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/event.h"
#include "framework/unknown.h"

namespace tarvex::test {

class FilterGraph : public UnknownImpl<IGraphBuilder, IMediaControl, IMediaEvent, IMediaEventSink> {
 public:
  FilterGraph() : UnknownImpl("FilterGraph", nullptr) {}
  ~FilterGraph() override;

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  // IFilterGraph. What no filter or test calls answers E_NOTIMPL.
  HRESULT STDMETHODCALLTYPE AddFilter(IBaseFilter* pFilter, LPCWSTR pName) override;
  HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter* pFilter) override;
  HRESULT STDMETHODCALLTYPE EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ConnectDirect(IPin* ppinOut, IPin* ppinIn, const AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE Reconnect(IPin*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Disconnect(IPin* ppin) override;
  HRESULT STDMETHODCALLTYPE SetDefaultSyncSource() override { return E_NOTIMPL; }

  // IGraphBuilder
  HRESULT STDMETHODCALLTYPE Connect(IPin*, IPin*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Render(IPin* ppinOut) override;
  HRESULT STDMETHODCALLTYPE RenderFile(LPCWSTR, LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE AddSourceFilter(LPCWSTR, LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetLogFile(DWORD_PTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Abort() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ShouldOperationContinue() override { return S_OK; }

  // IDispatch
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }

  // IMediaControl
  HRESULT STDMETHODCALLTYPE Run() override;
  HRESULT STDMETHODCALLTYPE Pause() override;
  HRESULT STDMETHODCALLTYPE Stop() override;
  HRESULT STDMETHODCALLTYPE GetState(LONG msTimeout, OAFilterState* pfs) override;
  HRESULT STDMETHODCALLTYPE RenderFile(BSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE AddSourceFilter(BSTR, IDispatch**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_FilterCollection(IDispatch**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_RegFilterCollection(IDispatch**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE StopWhenReady() override { return E_NOTIMPL; }

  // IMediaEvent
  HRESULT STDMETHODCALLTYPE GetEventHandle(OAEVENT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetEvent(LONG* lEventCode, LONG_PTR* lParam1, LONG_PTR* lParam2, LONG msTimeout) override;
  HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG, LONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CancelDefaultHandling(LONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RestoreDefaultHandling(LONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FreeEventParams(LONG, LONG_PTR, LONG_PTR) override { return S_OK; }

  // IMediaEventSink
  HRESULT STDMETHODCALLTYPE Notify(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2) override;

 private:
  HRESULT FindSeeking(void** out);

  struct GraphEvent {
    LONG code;
    LONG_PTR first;
    LONG_PTR second;
  };
  template <class Change>
  HRESULT ChangeState(OAFilterState state, Change change);

  CCritSec m_lock{"FilterGraph", LockRank::kGraph};  // around every call but questions and events
  std::vector<ComPtr<IBaseFilter>> m_filters;        // under m_lock
  std::atomic<OAFilterState> m_state{State_Stopped};
  CCritSec m_eventLock{"FilterGraph events", LockRank::kVisited};
  std::deque<GraphEvent> m_events;  // under m_eventLock
  Event m_notified;
};

}  // namespace tarvex::test
