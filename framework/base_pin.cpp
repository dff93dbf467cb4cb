// The base of a pin: connection, media type agreement and identity. Membership in the filter is in
// pin_membership.cpp.
#include "framework/base_pin.h"

#include <algorithm>
#include <optional>

#include "framework/co_task_mem.h"
#include "framework/com_boundary.h"
#include "framework/enum_media_types.h"

namespace tarvex {

namespace {

/// Codes that only say that one type did not fit; any other tells the caller more.
bool SaysLittle(HRESULT hr) { return hr == E_FAIL || hr == E_INVALIDARG || hr == VFW_E_TYPE_NOT_ACCEPTED; }

}  // namespace

CBasePin::CBasePin(const char* objectName, CBaseFilter* filter, CCritSec* lock, const OLECHAR* name,
                   PIN_DIRECTION direction)
    : UnknownImpl(objectName, nullptr), m_pLock(lock), m_dir(direction), m_name(name), m_pFilter(filter) {}

CBasePin::~CBasePin() = default;

HRESULT STDMETHODCALLTYPE CBasePin::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IPin) return GiveInterface(static_cast<IPin*>(this), out);
  if (iid == IID_IQualityControl) return GiveInterface(static_cast<IQualityControl*>(this), out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE CBasePin::Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) {
  if (pReceivePin == nullptr) return E_POINTER;
  const PinScope scope(*this);
  if (!scope) return VFW_E_NOT_CONNECTED;
  if (IsConnected()) return VFW_E_ALREADY_CONNECTED;
  if (!IsStopped()) return VFW_E_NOT_STOPPED;
  return ComBoundary([&] {
    std::optional<CMediaType> type;
    if (pmt != nullptr) type.emplace(*pmt);
    return AgreeMediaType(pReceivePin, type ? &*type : nullptr);
  });
}

HRESULT CBasePin::AgreeMediaType(IPin* receiver, const CMediaType* type) {
  if (type != nullptr && !type->IsPartiallySpecified()) return AttemptConnection(receiver, type);
  HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
  for (const bool mine : {false, true}) {
    ComPtr<IEnumMediaTypes> types;
    if (FAILED(mine ? EnumMediaTypes(types.Put()) : receiver->EnumMediaTypes(types.Put()))) continue;
    const HRESULT hr = TryMediaTypes(receiver, type, types.Get());
    if (SUCCEEDED(hr)) return hr;
    if (failure == VFW_E_NO_ACCEPTABLE_TYPES) failure = hr;
  }
  return failure;
}

HRESULT CBasePin::TryMediaTypes(IPin* receiver, const CMediaType* filter, IEnumMediaTypes* types) {
  HRESULT hr = types->Reset();
  if (FAILED(hr)) return hr;
  HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
  for (;;) {
    AM_MEDIA_TYPE* record = nullptr;
    hr = types->Next(1, &record, nullptr);
    if (hr != S_OK) return failure;
    const MediaTypePtr owner(record);
    const CMediaType type(*record);
    if (filter != nullptr && !type.MatchesPartial(filter)) continue;
    hr = AttemptConnection(receiver, &type);
    if (SUCCEEDED(hr)) return hr;
    if (failure == VFW_E_NO_ACCEPTABLE_TYPES && !SaysLittle(hr)) failure = hr;
  }
}

HRESULT CBasePin::AttemptConnection(IPin* receiver, const CMediaType* type) {
  HRESULT hr = CheckConnect(receiver);
  if (SUCCEEDED(hr)) hr = ConnectAs(receiver, *type);
  if (SUCCEEDED(hr)) return S_OK;
  SetConnected(nullptr);
  BreakConnect();
  return hr;
}

HRESULT CBasePin::ConnectAs(IPin* receiver, const CMediaType& type) {
  HRESULT hr = CheckMediaType(&type);
  if (hr != S_OK) return SUCCEEDED(hr) ? VFW_E_TYPE_NOT_ACCEPTED : hr;
  SetConnected(ComPtr<IPin>(receiver));
  hr = SetMediaType(&type);
  if (FAILED(hr)) return hr;
  hr = receiver->ReceiveConnection(this, &type);
  if (FAILED(hr)) return hr;
  hr = ComBoundary([&] { return CompleteConnect(receiver); });
  if (FAILED(hr)) receiver->Disconnect();
  return hr;
}

HRESULT STDMETHODCALLTYPE CBasePin::ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) {
  if (pConnector == nullptr || pmt == nullptr) return E_POINTER;
  const PinScope scope(*this);
  if (!scope) return VFW_E_NOT_CONNECTED;
  if (IsConnected()) return VFW_E_ALREADY_CONNECTED;
  if (!IsStopped()) return VFW_E_NOT_STOPPED;
  HRESULT hr = CheckConnect(pConnector);
  if (SUCCEEDED(hr)) hr = ComBoundary([&] { return ReceiveAs(pConnector, CMediaType(*pmt)); });
  if (SUCCEEDED(hr)) return S_OK;
  SetConnected(nullptr);
  BreakConnect();
  return hr;
}

HRESULT CBasePin::ReceiveAs(IPin* connector, const CMediaType& type) {
  HRESULT hr = CheckMediaType(&type);
  if (hr != S_OK) return SUCCEEDED(hr) || SaysLittle(hr) ? VFW_E_TYPE_NOT_ACCEPTED : hr;
  SetConnected(ComPtr<IPin>(connector));
  hr = SetMediaType(&type);
  return FAILED(hr) ? hr : CompleteConnect(connector);
}

HRESULT STDMETHODCALLTYPE CBasePin::Disconnect() {
  const PinScope scope(*this);
  if (!scope) return VFW_E_NOT_CONNECTED;
  if (!IsStopped()) return VFW_E_NOT_STOPPED;
  return ComBoundary([&] { return DisconnectInternal(); });
}

HRESULT CBasePin::DisconnectInternal() {
  if (!IsConnected()) return S_FALSE;
  const HRESULT hr = BreakConnect();
  if (FAILED(hr)) return hr;
  SetConnected(nullptr);
  return S_OK;
}

HRESULT CBasePin::CheckConnect(IPin* peer) {
  PIN_DIRECTION direction = PINDIR_INPUT;
  const HRESULT hr = peer->QueryDirection(&direction);
  if (FAILED(hr)) return hr;
  return direction == m_dir ? VFW_E_INVALID_DIRECTION : S_OK;
}

void CBasePin::SetConnected(ComPtr<IPin> peer) noexcept {
  const CAutoLock hold(m_connectionLock);
  m_connected.Swap(peer);  // the former peer is released after the lock
  m_isConnected = m_connected.Get() != nullptr;
}

HRESULT CBasePin::SetMediaType(const CMediaType* type) {
  return ComBoundary([&] {
    CMediaType copy(*type);
    const CAutoLock hold(m_connectionLock);
    m_mt = std::move(copy);
    return S_OK;
  });
}

HRESULT CBasePin::GetMediaType(int /*position*/, CMediaType* /*type*/) { return VFW_S_NO_MORE_ITEMS; }

HRESULT STDMETHODCALLTYPE CBasePin::ConnectedTo(IPin** pPin) {
  if (pPin == nullptr) return E_POINTER;
  const CAutoLock hold(m_connectionLock);
  m_connected.CopyTo(pPin);
  return *pPin != nullptr ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT STDMETHODCALLTYPE CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* pmt) {
  if (pmt == nullptr) return E_POINTER;
  *pmt = AM_MEDIA_TYPE{};
  return ComBoundary([&] {
    const CAutoLock hold(m_connectionLock);
    if (!m_connected) return VFW_E_NOT_CONNECTED;
    CopyMediaType(pmt, m_mt);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CBasePin::QueryPinInfo(PIN_INFO* pInfo) {
  if (pInfo == nullptr) return E_POINTER;
  const std::size_t length = std::min<std::size_t>(m_name.size(), MAX_PIN_NAME - 1);
  std::copy_n(m_name.begin(), length, pInfo->achName);
  pInfo->achName[length] = OLECHAR{};
  pInfo->dir = m_dir;
  pInfo->pFilter = HoldFilter().Detach();
  return pInfo->pFilter != nullptr ? S_OK : VFW_E_NOT_IN_GRAPH;
}

HRESULT STDMETHODCALLTYPE CBasePin::QueryDirection(PIN_DIRECTION* pPinDir) {
  if (pPinDir == nullptr) return E_POINTER;
  *pPinDir = m_dir;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CBasePin::QueryId(LPWSTR* Id) {
  if (Id == nullptr) return E_POINTER;
  *Id = nullptr;
  return ComBoundary([&] {
    *Id = TaskString(m_name).Detach();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CBasePin::QueryAccept(const AM_MEDIA_TYPE* pmt) {
  if (pmt == nullptr) return E_POINTER;
  const auto filter = HoldFilter();
  if (!filter) return S_FALSE;
  const HRESULT hr = ComBoundary([&] {
    const CMediaType type(*pmt);
    return CheckMediaType(&type);
  });
  return FAILED(hr) ? S_FALSE : hr;
}

HRESULT STDMETHODCALLTYPE CBasePin::EnumMediaTypes(IEnumMediaTypes** ppEnum) {
  if (ppEnum == nullptr) return E_POINTER;
  *ppEnum = nullptr;
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  return ComBoundary([&] {
    *ppEnum = MakeCom<CEnumMediaTypes>(this).Detach();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CBasePin::QueryInternalConnections(IPin** /*apPin*/, ULONG* /*nPin*/) { return E_NOTIMPL; }

HRESULT STDMETHODCALLTYPE CBasePin::EndOfStream() { return S_OK; }

HRESULT STDMETHODCALLTYPE CBasePin::NewSegment(REFERENCE_TIME /*tStart*/, REFERENCE_TIME /*tStop*/, double /*dRate*/) {
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CBasePin::Notify(IBaseFilter* /*pSelf*/, Quality /*q*/) { return E_NOTIMPL; }

HRESULT STDMETHODCALLTYPE CBasePin::SetSink(IQualityControl* /*piqc*/) {
  const PinScope scope(*this);
  return scope ? S_OK : VFW_E_NOT_CONNECTED;
}

}  // namespace tarvex
