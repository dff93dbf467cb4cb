// A filter with one pin, written out from the platform's documents: it stands on nothing of the product's bases, so
// that a fault of those is not made twice. What both ends of a test graph share; owned through ComPtr. State changes
// and connections come from the graph's thread, questions from any.
#pragma once

#include <atomic>
#include <mutex>

#include "framework/com_ptr.h"
#include "framework/critical_section.h"
#include "framework/media_type.h"

namespace tarvex::test {

class PlainPin;

class PlainFilter : public IBaseFilter {
 public:
  PlainFilter(const PlainFilter&) = delete;
  PlainFilter& operator=(const PlainFilter&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
  ULONG STDMETHODCALLTYPE Release() override;

  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* /*pClassID*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Stop() override;
  HRESULT STDMETHODCALLTYPE Pause() override { return Change(State_Paused); }
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME /*tStart*/) override { return Change(State_Running); }
  HRESULT STDMETHODCALLTYPE GetState(DWORD dwMilliSecsTimeout, FILTER_STATE* State) override;
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* /*pClock*/) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** /*pClock*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** ppEnum) override;
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR /*Id*/, IPin** /*ppPin*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* pInfo) override;
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pName) override;
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* /*pVendorInfo*/) override { return E_NOTIMPL; }

 protected:
  /// `rank` is the place of the filter's lock, which is held while its pin connects and its state changes: so who
  /// calls it with a lock that is for a moment only is found out.
  explicit PlainFilter(LockRank rank) : m_lock("a test's filter", rank) {}
  virtual ~PlainFilter() = default;
  virtual PlainPin& OnlyPin() noexcept = 0;
  /// Ahead of the lock, so that a pin's calls in progress come to their end.
  virtual void BeforeStop() {}

 private:
  friend class PlainPin;
  HRESULT Change(FILTER_STATE state);

  CCritSec m_lock;
  std::atomic<ULONG> m_references{0};
  std::atomic<FILTER_STATE> m_state{State_Stopped};
  std::atomic<IFilterGraph*> m_graph{nullptr};  // not counted: it outlives our membership
};

/// The filter's pin, which lives as long as the filter and counts references on it.
class PlainPin : public IPin {
 public:
  PlainPin(PlainFilter& filter, PIN_DIRECTION direction) : m_filter(filter), m_direction(direction) {}
  PlainPin(const PlainPin&) = delete;
  PlainPin& operator=(const PlainPin&) = delete;
  virtual ~PlainPin() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return m_filter.AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return m_filter.Release(); }

  HRESULT STDMETHODCALLTYPE Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE Disconnect() override;
  HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pPin) override;
  HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* pInfo) override;
  HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* pPinDir) override;
  HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* /*Id*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* /*pmt*/) override { return S_OK; }
  /// The pin has none to offer: its peer's are taken.
  HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** /*ppEnum*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** /*apPin*/, ULONG* /*nPin*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EndOfStream() override { return E_UNEXPECTED; }
  HRESULT STDMETHODCALLTYPE BeginFlush() override { return E_UNEXPECTED; }
  HRESULT STDMETHODCALLTYPE EndFlush() override { return E_UNEXPECTED; }
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }

  bool IsConnected() const { return m_isConnected; }
  /// Lets go of the peer in any state, as a filter does that is destroyed.
  void Forget() { Keep(nullptr, nullptr); }

 protected:
  friend class PlainFilter;
  bool IsStopped() const noexcept { return m_filter.m_state == State_Stopped; }
  /// Of every change from or to the stopped state, and of the end of a connection.
  virtual void Begin() {}
  virtual void End() {}

 private:
  HRESULT CheckFree() const noexcept;
  void Keep(IPin* peer, const AM_MEDIA_TYPE* type);

  PlainFilter& m_filter;
  const PIN_DIRECTION m_direction;
  mutable std::mutex m_mutex;
  ComPtr<IPin> m_peer;  // under m_mutex
  CMediaType m_type;    // under m_mutex
  std::atomic<bool> m_isConnected{false};
};

}  // namespace tarvex::test
