#include "host/graph/tap_input_pin.h"

#include "framework/com_boundary.h"
#include "host/graph/tap_filter.h"
#include "host/graph/tap_output_pin.h"

namespace tarvex::host {

TapInputPin::TapInputPin(TapFilter* filter, CCritSec* lock, std::shared_ptr<SampleObserver> observer)
    : CBaseInputPin("host TapInputPin", filter, lock, OLESTR("In")), m_tap(filter), m_observer(std::move(observer)) {}

HRESULT TapInputPin::CheckMediaType(const CMediaType* /*type*/) { return S_OK; }

// Each of these holds the filter, and with it the output pin, but not the filter's lock: downstream may
// keep the thread for as long as it likes.

HRESULT STDMETHODCALLTYPE TapInputPin::Receive(IMediaSample* pSample) {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  const HRESULT result = CBaseInputPin::Receive(pSample);
  if (result != S_OK) return result;
  return ComBoundary([&] {
    m_observer->OnSample(ViewSample(pSample));
    return m_tap->OutputPin()->Deliver(pSample);
  });
}

HRESULT STDMETHODCALLTYPE TapInputPin::EndOfStream() {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  return ComBoundary([&] {
    m_observer->OnEndOfStream();
    return m_tap->OutputPin()->DeliverEndOfStream();
  });
}

HRESULT STDMETHODCALLTYPE TapInputPin::BeginFlush() {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  const HRESULT result = CBaseInputPin::BeginFlush();
  return FAILED(result) ? result : m_tap->OutputPin()->DeliverBeginFlush();
}

HRESULT STDMETHODCALLTYPE TapInputPin::EndFlush() {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  m_observer->OnRestart();
  const HRESULT result = m_tap->OutputPin()->DeliverEndFlush();
  const HRESULT own = CBaseInputPin::EndFlush();
  return FAILED(result) ? result : own;
}

HRESULT TapInputPin::Inactive() {
  const HRESULT result = CBaseInputPin::Inactive();
  m_observer->OnRestart();
  return result;
}

HRESULT STDMETHODCALLTYPE TapInputPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  return ComBoundary([&] {
    m_observer->OnSegment(tStart, tStop, dRate);
    const HRESULT result = CBaseInputPin::NewSegment(tStart, tStop, dRate);
    return FAILED(result) ? result : m_tap->OutputPin()->DeliverNewSegment(tStart, tStop, dRate);
  });
}

}  // namespace tarvex::host
