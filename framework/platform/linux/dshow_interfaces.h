// DirectShow's interfaces in published slot order for builds without the system headers. Owned by the
// platform border; include platform.h instead of this.
#pragma once

#include "framework/platform/linux/media_formats.h"

using HEVENT = ULONG_PTR;
using HSEMAPHORE = ULONG_PTR;
using OAEVENT = LONG_PTR;

struct IPin;

// Interfaces are never deleted through: lifetime is the reference count's.
// NOLINTBEGIN(cppcoreguidelines-virtual-class-destructor)

struct IReferenceClock : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* pTime) = 0;
  virtual HRESULT STDMETHODCALLTYPE AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, HEVENT hEvent,
                                               DWORD_PTR* pdwAdviseCookie) = 0;
  virtual HRESULT STDMETHODCALLTYPE AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME periodTime,
                                                   HSEMAPHORE hSemaphore, DWORD_PTR* pdwAdviseCookie) = 0;
  virtual HRESULT STDMETHODCALLTYPE Unadvise(DWORD_PTR dwAdviseCookie) = 0;
};

struct IEnumPins : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG cPins, IPin** ppPins, ULONG* pcFetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG cPins) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumPins** ppEnum) = 0;
};

struct IEnumMediaTypes : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG cMediaTypes, AM_MEDIA_TYPE** ppMediaTypes, ULONG* pcFetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG cMediaTypes) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumMediaTypes** ppEnum) = 0;
};

struct IEnumFilters : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG cFilters, IBaseFilter** ppFilter, ULONG* pcFetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG cFilters) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumFilters** ppEnum) = 0;
};

struct IPin : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) = 0;
  virtual HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) = 0;
  virtual HRESULT STDMETHODCALLTYPE Disconnect() = 0;
  virtual HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pPin) = 0;
  virtual HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* pmt) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* pInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* pPinDir) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* Id) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* pmt) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** ppEnum) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** apPin, ULONG* nPin) = 0;
  virtual HRESULT STDMETHODCALLTYPE EndOfStream() = 0;
  virtual HRESULT STDMETHODCALLTYPE BeginFlush() = 0;
  virtual HRESULT STDMETHODCALLTYPE EndFlush() = 0;
  virtual HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) = 0;
};

struct IMediaFilter : public IPersist {
  virtual HRESULT STDMETHODCALLTYPE Stop() = 0;
  virtual HRESULT STDMETHODCALLTYPE Pause() = 0;
  virtual HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME tStart) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetState(DWORD dwMilliSecsTimeout, FILTER_STATE* State) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* pClock) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** pClock) = 0;
};

struct IBaseFilter : public IMediaFilter {
  virtual HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** ppEnum) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR Id, IPin** ppPin) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* pInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pName) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* pVendorInfo) = 0;
};

struct IFilterGraph : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE AddFilter(IBaseFilter* pFilter, LPCWSTR pName) = 0;
  virtual HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter* pFilter) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnumFilters(IEnumFilters** ppEnum) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindFilterByName(LPCWSTR pName, IBaseFilter** ppFilter) = 0;
  virtual HRESULT STDMETHODCALLTYPE ConnectDirect(IPin* ppinOut, IPin* ppinIn, const AM_MEDIA_TYPE* pmt) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reconnect(IPin* ppin) = 0;
  virtual HRESULT STDMETHODCALLTYPE Disconnect(IPin* ppin) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetDefaultSyncSource() = 0;
};

struct IGraphBuilder : public IFilterGraph {
  virtual HRESULT STDMETHODCALLTYPE Connect(IPin* ppinOut, IPin* ppinIn) = 0;
  virtual HRESULT STDMETHODCALLTYPE Render(IPin* ppinOut) = 0;
  virtual HRESULT STDMETHODCALLTYPE RenderFile(LPCWSTR lpcwstrFile, LPCWSTR lpcwstrPlayList) = 0;
  virtual HRESULT STDMETHODCALLTYPE AddSourceFilter(LPCWSTR lpcwstrFileName, LPCWSTR lpcwstrFilterName,
                                                    IBaseFilter** ppFilter) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetLogFile(DWORD_PTR hFile) = 0;
  virtual HRESULT STDMETHODCALLTYPE Abort() = 0;
  virtual HRESULT STDMETHODCALLTYPE ShouldOperationContinue() = 0;
};

struct IMediaSample : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetPointer(BYTE** ppBuffer) = 0;
  virtual LONG STDMETHODCALLTYPE GetSize() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsSyncPoint() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL bIsSyncPoint) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsPreroll() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetPreroll(BOOL bIsPreroll) = 0;
  virtual LONG STDMETHODCALLTYPE GetActualDataLength() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG length) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** ppMediaType) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* pMediaType) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsDiscontinuity() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL bDiscontinuity) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) = 0;
};

struct IMediaSample2 : public IMediaSample {
  virtual HRESULT STDMETHODCALLTYPE GetProperties(DWORD cbProperties, BYTE* pbProperties) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetProperties(DWORD cbProperties, const BYTE* pbProperties) = 0;
};

struct IMemAllocator : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* pProps) = 0;
  virtual HRESULT STDMETHODCALLTYPE Commit() = 0;
  virtual HRESULT STDMETHODCALLTYPE Decommit() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* pStartTime,
                                              REFERENCE_TIME* pEndTime, DWORD dwFlags) = 0;
  virtual HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* pBuffer) = 0;
};

struct IMemInputPin : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** ppAllocator) = 0;
  virtual HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProps) = 0;
  virtual HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) = 0;
  virtual HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** pSamples, LONG nSamples,
                                                    LONG* nSamplesProcessed) = 0;
  virtual HRESULT STDMETHODCALLTYPE ReceiveCanBlock() = 0;
};

struct IAsyncReader : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE RequestAllocator(IMemAllocator* pPreferred, ALLOCATOR_PROPERTIES* pProps,
                                                     IMemAllocator** ppActual) = 0;
  virtual HRESULT STDMETHODCALLTYPE Request(IMediaSample* pSample, DWORD_PTR dwUser) = 0;
  virtual HRESULT STDMETHODCALLTYPE WaitForNext(DWORD dwTimeout, IMediaSample** ppSample, DWORD_PTR* pdwUser) = 0;
  virtual HRESULT STDMETHODCALLTYPE SyncReadAligned(IMediaSample* pSample) = 0;
  virtual HRESULT STDMETHODCALLTYPE SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) = 0;
  virtual HRESULT STDMETHODCALLTYPE Length(LONGLONG* pTotal, LONGLONG* pAvailable) = 0;
  virtual HRESULT STDMETHODCALLTYPE BeginFlush() = 0;
  virtual HRESULT STDMETHODCALLTYPE EndFlush() = 0;
};

struct IFileSourceFilter : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Load(LPCOLESTR pszFileName, const AM_MEDIA_TYPE* pmt) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCurFile(LPOLESTR* ppszFileName, AM_MEDIA_TYPE* pmt) = 0;
};

struct IMediaSeeking : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCapabilities(DWORD* pCapabilities) = 0;
  virtual HRESULT STDMETHODCALLTYPE CheckCapabilities(DWORD* pCapabilities) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsFormatSupported(const GUID* pFormat) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryPreferredFormat(GUID* pFormat) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTimeFormat(GUID* pFormat) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsUsingTimeFormat(const GUID* pFormat) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetTimeFormat(const GUID* pFormat) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDuration(LONGLONG* pDuration) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetStopPosition(LONGLONG* pStop) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCurrentPosition(LONGLONG* pCurrent) = 0;
  virtual HRESULT STDMETHODCALLTYPE ConvertTimeFormat(LONGLONG* pTarget, const GUID* pTargetFormat, LONGLONG Source,
                                                      const GUID* pSourceFormat) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetPositions(LONGLONG* pCurrent, DWORD dwCurrentFlags, LONGLONG* pStop,
                                                 DWORD dwStopFlags) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPositions(LONGLONG* pCurrent, LONGLONG* pStop) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetAvailable(LONGLONG* pEarliest, LONGLONG* pLatest) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetRate(double dRate) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRate(double* pdRate) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPreroll(LONGLONG* pllPreroll) = 0;
};

struct IMediaEventSink : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Notify(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2) = 0;
};

struct IMediaControl : public IDispatch {
  virtual HRESULT STDMETHODCALLTYPE Run() = 0;
  virtual HRESULT STDMETHODCALLTYPE Pause() = 0;
  virtual HRESULT STDMETHODCALLTYPE Stop() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetState(LONG msTimeout, OAFilterState* pfs) = 0;
  virtual HRESULT STDMETHODCALLTYPE RenderFile(BSTR strFilename) = 0;
  virtual HRESULT STDMETHODCALLTYPE AddSourceFilter(BSTR strFilename, IDispatch** ppUnk) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_FilterCollection(IDispatch** ppUnk) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_RegFilterCollection(IDispatch** ppUnk) = 0;
  virtual HRESULT STDMETHODCALLTYPE StopWhenReady() = 0;
};

struct IMediaEvent : public IDispatch {
  virtual HRESULT STDMETHODCALLTYPE GetEventHandle(OAEVENT* hEvent) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetEvent(LONG* lEventCode, LONG_PTR* lParam1, LONG_PTR* lParam2,
                                             LONG msTimeout) = 0;
  virtual HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG msTimeout, LONG* pEvCode) = 0;
  virtual HRESULT STDMETHODCALLTYPE CancelDefaultHandling(LONG lEvCode) = 0;
  virtual HRESULT STDMETHODCALLTYPE RestoreDefaultHandling(LONG lEvCode) = 0;
  virtual HRESULT STDMETHODCALLTYPE FreeEventParams(LONG lEvCode, LONG_PTR lParam1, LONG_PTR lParam2) = 0;
};

struct IQualityControl : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* pSelf, Quality q) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSink(IQualityControl* piqc) = 0;
};

struct IAMovieSetup : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Register() = 0;
  virtual HRESULT STDMETHODCALLTYPE Unregister() = 0;
};

struct IAMStreamSelect : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Count(DWORD* pcStreams) = 0;
  virtual HRESULT STDMETHODCALLTYPE Info(LONG lIndex, AM_MEDIA_TYPE** ppmt, DWORD* pdwFlags, LCID* plcid,
                                         DWORD* pdwGroup, WCHAR** ppszName, IUnknown** ppObject, IUnknown** ppUnk) = 0;
  virtual HRESULT STDMETHODCALLTYPE Enable(LONG lIndex, DWORD dwFlags) = 0;
};

// NOLINTEND(cppcoreguidelines-virtual-class-destructor)
