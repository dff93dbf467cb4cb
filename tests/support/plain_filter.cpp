// See plain_filter.h.
#include "tests/support/plain_filter.h"

namespace tarvex::test {
namespace {

HRESULT Give(IUnknown* object, void** out) {
  object->AddRef();
  *out = object;
  return S_OK;
}

/// The list of the one pin, as far as graphs go through it.
class OnePin final : public IEnumPins {
 public:
  explicit OnePin(IPin* pin) : m_pin(pin) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    return iid == IID_IUnknown || iid == IID_IEnumPins ? Give(this, out) : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --m_references;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE Next(ULONG cPins, IPin** ppPins, ULONG* pcFetched) override {
    const bool gives = !m_given && cPins > 0;
    if (gives) m_pin.CopyTo(ppPins);
    m_given = m_given || gives;
    if (pcFetched != nullptr) *pcFetched = gives ? 1 : 0;
    return cPins == (gives ? 1U : 0U) ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG /*cPins*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reset() override {
    m_given = false;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumPins** /*ppEnum*/) override { return E_NOTIMPL; }

 private:
  const ComPtr<IPin> m_pin;
  bool m_given = false;
  std::atomic<ULONG> m_references{0};
};

}  // namespace

HRESULT STDMETHODCALLTYPE PlainFilter::QueryInterface(REFIID iid, void** out) {
  const bool isOurs = iid == IID_IUnknown || iid == IID_IPersist || iid == IID_IMediaFilter || iid == IID_IBaseFilter;
  *out = nullptr;
  return isOurs ? Give(static_cast<IBaseFilter*>(this), out) : E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE PlainFilter::Release() {
  const ULONG left = --m_references;
  if (left == 0) delete this;
  return left;
}

HRESULT STDMETHODCALLTYPE PlainFilter::Stop() {
  BeforeStop();
  return Change(State_Stopped);
}

HRESULT PlainFilter::Change(FILTER_STATE state) {
  const CAutoLock hold(m_lock);
  const FILTER_STATE former = m_state.exchange(state);
  if (former == State_Stopped && state != State_Stopped) OnlyPin().Begin();
  if (former != State_Stopped && state == State_Stopped) OnlyPin().End();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PlainFilter::GetState(DWORD /*dwMilliSecsTimeout*/, FILTER_STATE* State) {
  *State = m_state;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PlainFilter::EnumPins(IEnumPins** ppEnum) {
  ComPtr<IEnumPins>(new OnePin(&OnlyPin())).CopyTo(ppEnum);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PlainFilter::QueryFilterInfo(FILTER_INFO* pInfo) {
  *pInfo = FILTER_INFO{};
  ComPtr<IFilterGraph>(m_graph).CopyTo(&pInfo->pGraph);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PlainFilter::JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR /*pName*/) {
  m_graph = pGraph;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PlainPin::QueryInterface(REFIID iid, void** out) {
  *out = nullptr;
  return iid == IID_IUnknown || iid == IID_IPin ? Give(static_cast<IPin*>(this), out) : E_NOINTERFACE;
}

HRESULT PlainPin::CheckFree() const noexcept {
  if (m_isConnected) return VFW_E_ALREADY_CONNECTED;
  return IsStopped() ? S_OK : VFW_E_NOT_STOPPED;
}

void PlainPin::Keep(IPin* peer, const AM_MEDIA_TYPE* type) {
  ComPtr<IPin> former(peer);
  CMediaType copy = type == nullptr ? CMediaType() : CMediaType(*type);
  const std::lock_guard hold(m_mutex);
  m_peer.Swap(former);  // which goes behind the lock
  m_type = std::move(copy);
  m_isConnected = peer != nullptr;
}

// Of bytes, where no type is asked for: the only pin here that connects is the source's.
HRESULT STDMETHODCALLTYPE PlainPin::Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) {
  const CAutoLock hold(m_filter.m_lock);
  HRESULT result = CheckFree();
  if (FAILED(result)) return result;
  const CMediaType stream(MEDIATYPE_Stream);
  if (pmt == nullptr) pmt = &stream;
  Keep(pReceivePin, pmt);
  result = pReceivePin->ReceiveConnection(this, pmt);
  if (FAILED(result)) Keep(nullptr, nullptr);
  return result;
}

HRESULT STDMETHODCALLTYPE PlainPin::ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) {
  if (pConnector == nullptr || pmt == nullptr) return E_POINTER;
  const CAutoLock hold(m_filter.m_lock);
  const HRESULT result = CheckFree();
  if (FAILED(result)) return result;
  try {
    Keep(pConnector, pmt);
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PlainPin::Disconnect() {
  const CAutoLock hold(m_filter.m_lock);
  if (!m_isConnected) return S_FALSE;
  if (!IsStopped()) return VFW_E_NOT_STOPPED;
  Keep(nullptr, nullptr);
  End();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PlainPin::ConnectedTo(IPin** pPin) {
  const std::lock_guard hold(m_mutex);
  m_peer.CopyTo(pPin);
  return m_peer ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT STDMETHODCALLTYPE PlainPin::ConnectionMediaType(AM_MEDIA_TYPE* pmt) {
  *pmt = AM_MEDIA_TYPE{};
  const std::lock_guard hold(m_mutex);
  if (!m_peer) return VFW_E_NOT_CONNECTED;
  CopyMediaType(pmt, m_type);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PlainPin::QueryPinInfo(PIN_INFO* pInfo) {
  *pInfo = PIN_INFO{};
  pInfo->dir = m_direction;
  ComPtr<IBaseFilter>(&m_filter).CopyTo(&pInfo->pFilter);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PlainPin::QueryDirection(PIN_DIRECTION* pPinDir) {
  *pPinDir = m_direction;
  return S_OK;
}

}  // namespace tarvex::test
