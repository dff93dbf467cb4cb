// The enumerator of a filter's pins. Made by CBaseFilter::EnumPins for an application, which owns it
// and uses it on one thread at a time.
#pragma once

#include "framework/base_filter.h"
#include "framework/com_ptr.h"
#include "framework/unknown.h"

namespace tarvex {

/// Holds a reference on the filter. Entries that the filter leaves null are passed over and count for
/// nothing. When the filter's pins have changed since creation or Reset, Next, Skip and Clone answer
/// VFW_E_ENUM_OUT_OF_SYNC.
class CEnumPins : public UnknownImpl<IEnumPins> {
 public:
  explicit CEnumPins(CBaseFilter* filter);

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  HRESULT STDMETHODCALLTYPE Next(ULONG cPins, IPin** ppPins, ULONG* pcFetched) override;
  HRESULT STDMETHODCALLTYPE Skip(ULONG cPins) override;
  HRESULT STDMETHODCALLTYPE Reset() override;
  HRESULT STDMETHODCALLTYPE Clone(IEnumPins** ppEnum) override;

 private:
  CEnumPins(CBaseFilter* filter, LONG version, int position);
  bool IsOutOfSync() const;
  ComPtr<IPin> NextPin();

  ComPtr<CBaseFilter> m_filter;
  LONG m_version;
  int m_position = 0;  // index of the next entry to look at
};

}  // namespace tarvex
