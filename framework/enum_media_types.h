// The enumerator of a pin's media types. Made by CBasePin::EnumMediaTypes for an application, which
// owns it and uses it on one thread at a time.
#pragma once

#include "framework/com_ptr.h"
#include "framework/unknown.h"

namespace tarvex {

class CBasePin;

/// Holds a reference on the pin and asks it for one type after another. When the pin's type version
/// has changed since creation or Reset, Next, Skip and Clone answer VFW_E_ENUM_OUT_OF_SYNC; so they do
/// for a pin that has left its filter.
class CEnumMediaTypes : public UnknownImpl<IEnumMediaTypes> {
 public:
  explicit CEnumMediaTypes(CBasePin* pin);
  ~CEnumMediaTypes() override;

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  HRESULT STDMETHODCALLTYPE Next(ULONG cMediaTypes, AM_MEDIA_TYPE** ppMediaTypes, ULONG* pcFetched) override;
  HRESULT STDMETHODCALLTYPE Skip(ULONG cMediaTypes) override;
  HRESULT STDMETHODCALLTYPE Reset() override;
  HRESULT STDMETHODCALLTYPE Clone(IEnumMediaTypes** ppEnum) override;

 private:
  CEnumMediaTypes(CBasePin* pin, LONG version, int position);
  bool IsOutOfSync() const;

  ComPtr<CBasePin> m_pin;
  LONG m_version;
  int m_position = 0;
};

}  // namespace tarvex
