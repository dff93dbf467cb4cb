#include "host/graph/sink_filter.h"

#include "framework/com_boundary.h"
#include "host/graph/sink_pin.h"

namespace tarvex::host {

namespace {

// {0C2DF9F5-9A6C-4E0A-8B0E-6C0C0BFA4D11}
constexpr GUID kSinkClass = {0x0C2DF9F5, 0x9A6C, 0x4E0A, {0x8B, 0x0E, 0x6C, 0x0C, 0x0B, 0xFA, 0x4D, 0x11}};

}  // namespace

SinkFilter::SinkFilter(std::shared_ptr<SampleObserver> observer, SinkSeeking seeking)
    : CBaseFilter("host SinkFilter", nullptr, &m_filterLock, kSinkClass),
      m_offered(seeking),
      m_pin(new SinkPin(this, &m_filterLock, std::move(observer))),
      m_seeking(Owner(), m_pin.Get(), SeekingPassThru::Place::kEnd) {}

SinkFilter::~SinkFilter() = default;

HRESULT STDMETHODCALLTYPE SinkFilter::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IAMFilterMiscFlags) return GiveInterface(static_cast<IAMFilterMiscFlags*>(this), out);
  if (m_offered == SinkSeeking::kOffered && SUCCEEDED(m_seeking.Query(iid, out))) return S_OK;
  return CBaseFilter::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE SinkFilter::Run(REFERENCE_TIME tStart) {
  const HRESULT result = CBaseFilter::Run(tStart);
  if (FAILED(result)) return result;
  {
    const CAutoLock hold(m_endLock);
    m_running = true;
  }
  NotifyEnd();
  return result;
}

// Run calls this as well, on its way from the stopped state, and marks the filter as running afterwards.
HRESULT STDMETHODCALLTYPE SinkFilter::Pause() {
  const HRESULT result = CBaseFilter::Pause();
  const CAutoLock hold(m_endLock);
  m_running = false;
  return result;
}

HRESULT STDMETHODCALLTYPE SinkFilter::Stop() {
  const HRESULT result = CBaseFilter::Stop();
  const CAutoLock hold(m_endLock);
  m_running = m_ended = m_notified = false;
  return result;
}

CBasePin* SinkFilter::GetPin(int index) { return index == 0 ? m_pin.Get() : nullptr; }

ComPtr<IPin> SinkFilter::Input() const { return ComPtr<IPin>(m_pin.Get()); }

void SinkFilter::EndReached() {
  {
    const CAutoLock hold(m_endLock);
    m_ended = true;
  }
  NotifyEnd();
}

void SinkFilter::ForgetEnd() {
  const CAutoLock hold(m_endLock);
  m_ended = m_notified = false;
}

// The graph is told outside the lock, since it may call back.
void SinkFilter::NotifyEnd() {
  {
    const CAutoLock hold(m_endLock);
    if (!m_ended || !m_running || m_notified) return;
    m_notified = true;
  }
  NotifyEvent(EC_COMPLETE, S_OK, 0);
}

}  // namespace tarvex::host
