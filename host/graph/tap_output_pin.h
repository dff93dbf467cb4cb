// The tap filter's output: offers the type of the input's connection and hands on the input's allocator.
// Owned by the filter; connected on application threads, delivers on the input's streaming thread.
#pragma once

#include "framework/base_output_pin.h"
#include "host/graph/seeking_pass_thru.h"

namespace tarvex::host {

class TapFilter;

class TapOutputPin : public CBaseOutputPin {
 public:
  /// `filter` is not counted; it owns the pin.
  TapOutputPin(TapFilter* filter, CCritSec* lock);

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  /// Only the type of the input's connection.
  HRESULT CheckMediaType(const CMediaType* type) override;
  HRESULT GetMediaType(int position, CMediaType* type) override;
  /// Gives the peer the input's allocator; VFW_E_NO_ALLOCATOR without one.
  HRESULT DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator) override;
  /// Never called, since the allocator is not ours to set.
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;

  // The allocator belongs to the connection upstream, which commits and decommits it.
  HRESULT Active() override { return S_OK; }
  HRESULT Inactive() override { return S_OK; }

 private:
  TapFilter* const m_tap;
  SeekingPassThru m_seeking;
};

}  // namespace tarvex::host
