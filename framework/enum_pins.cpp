// The enumerator of a filter's pins.
#include "framework/enum_pins.h"

#include "framework/base_pin.h"
#include "framework/com_boundary.h"

namespace tarvex {

CEnumPins::CEnumPins(CBaseFilter* filter) : CEnumPins(filter, filter->GetPinVersion(), 0) {}

CEnumPins::CEnumPins(CBaseFilter* filter, LONG version, int position)
    : UnknownImpl("CEnumPins", nullptr), m_filter(filter), m_version(version), m_position(position) {}

HRESULT STDMETHODCALLTYPE CEnumPins::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IEnumPins) return GiveInterface(static_cast<IEnumPins*>(this), out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

bool CEnumPins::IsOutOfSync() const { return m_version != m_filter->GetPinVersion(); }

// The next pin that is there, or null past the end. With the filter's lock held.
ComPtr<IPin> CEnumPins::NextPin() {
  const int count = m_filter->GetPinCount();
  while (m_position < count) {
    CBasePin* pin = m_filter->GetPin(m_position++);
    if (pin != nullptr) return ComPtr<IPin>(pin);
  }
  return nullptr;
}

HRESULT STDMETHODCALLTYPE CEnumPins::Next(ULONG cPins, IPin** ppPins, ULONG* pcFetched) {
  if (ppPins == nullptr) return E_POINTER;
  if (pcFetched != nullptr) *pcFetched = 0;
  if (pcFetched == nullptr && cPins > 1) return E_INVALIDARG;
  return ComBoundary([&] {
    const CAutoLock hold(m_filter->FilterLock());
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    ULONG fetched = 0;
    while (fetched < cPins) {
      auto pin = NextPin();
      if (!pin) break;
      ppPins[fetched++] = pin.Detach();
    }
    if (pcFetched != nullptr) *pcFetched = fetched;
    return fetched == cPins ? S_OK : S_FALSE;
  });
}

HRESULT STDMETHODCALLTYPE CEnumPins::Skip(ULONG cPins) {
  return ComBoundary([&] {
    const CAutoLock hold(m_filter->FilterLock());
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    for (; cPins > 0; --cPins) {
      if (!NextPin()) return S_FALSE;
    }
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CEnumPins::Reset() {
  m_version = m_filter->GetPinVersion();
  m_position = 0;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CEnumPins::Clone(IEnumPins** ppEnum) {
  if (ppEnum == nullptr) return E_POINTER;
  *ppEnum = nullptr;
  if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
  return ComBoundary([&] {
    *ppEnum = ComPtr<CEnumPins>(new CEnumPins(m_filter.Get(), m_version, m_position)).Detach();
    return S_OK;
  });
}

}  // namespace tarvex
