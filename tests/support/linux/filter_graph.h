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

class CFilterGraph : public CUnknownImpl<IGraphBuilder, IMediaControl, IMediaEvent, IMediaEventSink> {
 public:
  CFilterGraph() : CUnknownImpl("CFilterGraph", nullptr) {}
  ~CFilterGraph() override;

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  // IFilterGraph
  HRESULT STDMETHODCALLTYPE AddFilter(IBaseFilter* pFilter, LPCWSTR pName) override;
  HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter* pFilter) override;
  HRESULT STDMETHODCALLTYPE EnumFilters(IEnumFilters** ppEnum) override;
  HRESULT STDMETHODCALLTYPE FindFilterByName(LPCWSTR pName, IBaseFilter** ppFilter) override;
  HRESULT STDMETHODCALLTYPE ConnectDirect(IPin* ppinOut, IPin* ppinIn, const AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE Reconnect(IPin* ppin) override;
  HRESULT STDMETHODCALLTYPE Disconnect(IPin* ppin) override;
  HRESULT STDMETHODCALLTYPE SetDefaultSyncSource() override;

  // IGraphBuilder
  HRESULT STDMETHODCALLTYPE Connect(IPin* ppinOut, IPin* ppinIn) override;
  HRESULT STDMETHODCALLTYPE Render(IPin* ppinOut) override;
  HRESULT STDMETHODCALLTYPE RenderFile(LPCWSTR lpcwstrFile, LPCWSTR lpcwstrPlayList) override;
  HRESULT STDMETHODCALLTYPE AddSourceFilter(LPCWSTR lpcwstrFileName, LPCWSTR lpcwstrFilterName,
                                            IBaseFilter** ppFilter) override;
  HRESULT STDMETHODCALLTYPE SetLogFile(DWORD_PTR hFile) override;
  HRESULT STDMETHODCALLTYPE Abort() override;
  HRESULT STDMETHODCALLTYPE ShouldOperationContinue() override;

  // IDispatch
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) override;
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                          DISPID* rgDispId) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags, DISPPARAMS* pDispParams,
                                   VARIANT* pVarResult, EXCEPINFO* pExcepInfo, UINT* puArgErr) override;

  // IMediaControl
  HRESULT STDMETHODCALLTYPE Run() override;
  HRESULT STDMETHODCALLTYPE Pause() override;
  HRESULT STDMETHODCALLTYPE Stop() override;
  HRESULT STDMETHODCALLTYPE GetState(LONG msTimeout, OAFilterState* pfs) override;
  HRESULT STDMETHODCALLTYPE RenderFile(BSTR strFilename) override;
  HRESULT STDMETHODCALLTYPE AddSourceFilter(BSTR strFilename, IDispatch** ppUnk) override;
  HRESULT STDMETHODCALLTYPE get_FilterCollection(IDispatch** ppUnk) override;
  HRESULT STDMETHODCALLTYPE get_RegFilterCollection(IDispatch** ppUnk) override;
  HRESULT STDMETHODCALLTYPE StopWhenReady() override;

  // IMediaEvent
  HRESULT STDMETHODCALLTYPE GetEventHandle(OAEVENT* hEvent) override;
  HRESULT STDMETHODCALLTYPE GetEvent(LONG* lEventCode, LONG_PTR* lParam1, LONG_PTR* lParam2, LONG msTimeout) override;
  HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG msTimeout, LONG* pEvCode) override;
  HRESULT STDMETHODCALLTYPE CancelDefaultHandling(LONG lEvCode) override;
  HRESULT STDMETHODCALLTYPE RestoreDefaultHandling(LONG lEvCode) override;
  HRESULT STDMETHODCALLTYPE FreeEventParams(LONG lEvCode, LONG_PTR lParam1, LONG_PTR lParam2) override;

  // IMediaEventSink
  HRESULT STDMETHODCALLTYPE Notify(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2) override;

 private:
  HRESULT FindSeeking(void** out);

  struct Event {
    LONG code;
    LONG_PTR first;
    LONG_PTR second;
  };
  template <class Change>
  HRESULT ChangeState(OAFilterState state, Change change);

  CCritSec m_lock{"CFilterGraph", LockRank::kGraph};  // around every call but questions and events
  std::vector<ComPtr<IBaseFilter>> m_filters;         // under m_lock
  std::atomic<OAFilterState> m_state{State_Stopped};
  CCritSec m_eventLock{"CFilterGraph events", LockRank::kVisited};
  std::deque<Event> m_events;  // under m_eventLock
  CEvent m_notified;
};

}  // namespace tarvex::test
