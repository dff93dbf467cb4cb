// The tap filter's input: takes any type and hands every stream call to the output pin. Owned by the
// filter; the stream calls run on the streaming thread of the pin upstream.
#pragma once

#include <memory>

#include "framework/base_input_pin.h"
#include "host/graph/sample_observer.h"

namespace tarvex::host {

class TapFilter;

class TapInputPin : public CBaseInputPin {
 public:
  /// `filter` is not counted; it owns the pin.
  TapInputPin(TapFilter* filter, CCritSec* lock, std::shared_ptr<SampleObserver> observer);

  /// Takes every type.
  HRESULT CheckMediaType(const CMediaType* type) override;

  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;
  HRESULT Inactive() override;
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

  /// The allocator that upstream chose, for the output pin; null before the connection. With the
  /// filter's lock held.
  IMemAllocator* Allocator() const noexcept { return m_pAllocator.Get(); }

 private:
  TapFilter* const m_tap;
  const std::shared_ptr<SampleObserver> m_observer;
};

}  // namespace tarvex::host
