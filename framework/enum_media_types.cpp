// The enumerator of a pin's media types.
#include "framework/enum_media_types.h"

#include <utility>

#include "framework/base_pin.h"
#include "framework/com_boundary.h"

namespace tarvex {

CEnumMediaTypes::CEnumMediaTypes(CBasePin* pin) : CEnumMediaTypes(pin, pin->GetMediaTypeVersion(), 0) {}

CEnumMediaTypes::CEnumMediaTypes(CBasePin* pin, LONG version, int position)
    : UnknownImpl("CEnumMediaTypes", nullptr), m_pin(pin), m_version(version), m_position(position) {}

CEnumMediaTypes::~CEnumMediaTypes() = default;

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IEnumMediaTypes) return GiveInterface(static_cast<IEnumMediaTypes*>(this), out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

bool CEnumMediaTypes::IsOutOfSync() const { return m_version != m_pin->GetMediaTypeVersion(); }

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::Next(ULONG cMediaTypes, AM_MEDIA_TYPE** ppMediaTypes, ULONG* pcFetched) {
  if (ppMediaTypes == nullptr) return E_POINTER;
  if (pcFetched != nullptr) *pcFetched = 0;
  if (pcFetched == nullptr && cMediaTypes > 1) return E_INVALIDARG;
  const auto filter = m_pin->HoldFilter();
  if (!filter || IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
  ULONG fetched = 0;
  const HRESULT hr = ComBoundary([&] {
    while (fetched < cMediaTypes) {
      CMediaType type;
      const HRESULT got = m_pin->GetMediaType(m_position, &type);
      if (FAILED(got)) return got;  // a type that cannot be had now is not the end of the list
      if (got != S_OK) break;
      ppMediaTypes[fetched] = CreateMediaType(type);
      ++fetched;
      ++m_position;
    }
    return fetched == cMediaTypes ? S_OK : S_FALSE;
  });
  // What was stored before a failure belongs to the caller only with a success code.
  if (FAILED(hr)) {
    m_position -= static_cast<int>(fetched);
    while (fetched > 0) DeleteMediaType(std::exchange(ppMediaTypes[--fetched], nullptr));
  }
  if (pcFetched != nullptr) *pcFetched = fetched;
  return hr;
}

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::Skip(ULONG cMediaTypes) {
  const auto filter = m_pin->HoldFilter();
  if (!filter || IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
  return ComBoundary([&] {
    for (; cMediaTypes > 0; --cMediaTypes, ++m_position) {
      CMediaType type;
      const HRESULT got = m_pin->GetMediaType(m_position, &type);
      if (got != S_OK) return FAILED(got) ? got : S_FALSE;
    }
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::Reset() {
  m_version = m_pin->GetMediaTypeVersion();
  m_position = 0;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::Clone(IEnumMediaTypes** ppEnum) {
  if (ppEnum == nullptr) return E_POINTER;
  *ppEnum = nullptr;
  const auto filter = m_pin->HoldFilter();
  if (!filter || IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
  return ComBoundary([&] {
    *ppEnum = ComPtr<CEnumMediaTypes>(new CEnumMediaTypes(m_pin.Get(), m_version, m_position)).Detach();
    return S_OK;
  });
}

}  // namespace tarvex
