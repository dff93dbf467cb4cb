#include "host/graph/sink_pin.h"

#include "framework/com_boundary.h"
#include "host/graph/sink_filter.h"

namespace tarvex::host {

SinkPin::SinkPin(SinkFilter* filter, CCritSec* lock, std::shared_ptr<SampleObserver> observer)
    : CBaseInputPin("host SinkPin", filter, lock, OLESTR("In")), m_sink(filter), m_observer(std::move(observer)) {}

HRESULT SinkPin::CheckMediaType(const CMediaType* /*type*/) { return S_OK; }

HRESULT STDMETHODCALLTYPE SinkPin::Receive(IMediaSample* pSample) {
  const HRESULT result = CBaseInputPin::Receive(pSample);
  if (result != S_OK) return result;
  return ComBoundary([&] {
    m_observer->OnSample(ViewSample(pSample));
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE SinkPin::EndOfStream() {
  const PinScope scope(*this);
  if (!scope) return VFW_E_NOT_CONNECTED;
  return ComBoundary([&] {
    m_observer->OnEndOfStream();
    m_sink->EndReached();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE SinkPin::EndFlush() {
  const PinScope scope(*this);
  if (!scope) return VFW_E_NOT_CONNECTED;
  m_observer->OnRestart();
  m_sink->ForgetEnd();
  return CBaseInputPin::EndFlush();
}

HRESULT SinkPin::Inactive() {
  const HRESULT result = CBaseInputPin::Inactive();
  m_observer->OnRestart();
  return result;
}

HRESULT STDMETHODCALLTYPE SinkPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) {
  const HRESULT result = ComBoundary([&] {
    m_observer->OnSegment(tStart, tStop, dRate);
    return S_OK;
  });
  return FAILED(result) ? result : CBaseInputPin::NewSegment(tStart, tStop, dRate);
}

}  // namespace tarvex::host
