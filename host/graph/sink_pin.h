// The sink filter's only pin. Owned by the filter; the stream calls run on the streaming thread of the
// pin upstream.
#pragma once

#include <memory>

#include "framework/base_input_pin.h"
#include "host/graph/sample_observer.h"

namespace tarvex::host {

class SinkFilter;

class SinkPin : public CBaseInputPin {
 public:
  /// `filter` is not counted; it owns the pin.
  SinkPin(SinkFilter* filter, CCritSec* lock, std::shared_ptr<SampleObserver> observer);

  /// Takes every type.
  HRESULT CheckMediaType(const CMediaType* type) override;

  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
  /// S_FALSE: it never waits.
  HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override { return S_FALSE; }
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;
  HRESULT Inactive() override;
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

 private:
  SinkFilter* const m_sink;
  const std::shared_ptr<SampleObserver> m_observer;
};

}  // namespace tarvex::host
