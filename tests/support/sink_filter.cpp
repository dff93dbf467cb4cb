// See sink_filter.h.
#include "tests/support/sink_filter.h"

#include <algorithm>
#include <utility>

#include "framework/thread.h"
#include "tests/support/digest.h"

namespace tarvex::test {
namespace {

// {5D3C9E51-7E6B-4A52-9B0F-3B8C5B3E2C11}
constexpr GUID kSinkClass = {0x5D3C9E51, 0x7E6B, 0x4A52, {0x9B, 0x0F, 0x3B, 0x8C, 0x5B, 0x3E, 0x2C, 0x11}};
constexpr DWORD kSlowness = 5;  // milliseconds

SinkEvent Describe(IMediaSample* sample, bool withChecksum) {
  SinkEvent event;
  sample->GetTime(&event.start, &event.stop);
  event.key = sample->IsSyncPoint() == S_OK;
  event.discontinuity = sample->IsDiscontinuity() == S_OK;
  event.preroll = sample->IsPreroll() == S_OK;
  event.size = static_cast<std::uint32_t>(sample->GetActualDataLength());
  BYTE* data = nullptr;
  if (withChecksum && SUCCEEDED(sample->GetPointer(&data))) event.sha1 = Sha1Of({data, event.size});
  return event;
}

}  // namespace

const char* NameOf(SinkKind kind) {
  switch (kind) {
    case SinkKind::kRecording:
      return "recording";
    case SinkKind::kCounting:
      return "counting";
    case SinkKind::kSlow:
      return "slow";
    case SinkKind::kHolding:
      return "holding";
    case SinkKind::kBlocking:
      return "blocking";
    case SinkKind::kRefusing:
      return "refusing";
  }
  return "?";
}

ComPtr<SinkFilter> SinkFilter::Create(SinkKind kind) { return ComPtr<SinkFilter>(new SinkFilter(kind)); }

SinkFilter::SinkFilter(SinkKind kind)
    : CBaseFilter("SinkFilter", nullptr, &m_filterLock, kSinkClass),
      m_kind(kind),
      m_pin(new SinkPin(this, &m_filterLock)) {}

SinkFilter::~SinkFilter() = default;

CBasePin* SinkFilter::GetPin(int index) { return index == 0 ? m_pin.Get() : nullptr; }

// What blocks is let go before the filter lock is waited for.
HRESULT STDMETHODCALLTYPE SinkFilter::Stop() {
  Unblock();
  return CBaseFilter::Stop();
}

std::vector<SinkEvent> SinkFilter::Events() {
  const CAutoLock lock(m_recordLock);
  return m_events;
}

std::vector<SinkEvent> SinkFilter::Samples() {
  std::vector<SinkEvent> samples = Events();
  std::erase_if(samples, [](const SinkEvent& event) { return event.kind != SinkEvent::Kind::kSample; });
  return samples;
}

std::size_t SinkFilter::CountOf(SinkEvent::Kind kind) {
  const CAutoLock lock(m_recordLock);
  return static_cast<std::size_t>(
      std::count_if(m_events.begin(), m_events.end(), [kind](const SinkEvent& event) { return event.kind == kind; }));
}

void SinkFilter::Clear() {
  const CAutoLock lock(m_recordLock);
  m_events.clear();
  m_ended.Clear();
  m_sampled.Clear();
}

// The samples go outside the lock: releasing one wakes the thread that waits for its memory.
void SinkFilter::LetGo() {
  std::vector<ComPtr<IMediaSample>> held;
  const CAutoLock lock(m_recordLock);
  held.swap(m_held);
}

HRESULT SinkFilter::Take(IMediaSample* sample) {
  Arrive();
  // A flush may have begun since the pin looked.
  if (!RecordUnlessFlushing(Describe(sample, m_kind == SinkKind::kRecording))) return S_FALSE;
  m_sampled.Set();
  if (m_onSample) m_onSample(sample);
  if (m_answer) return m_answer(sample);
  if (m_kind == SinkKind::kSlow) m_released.Wait(kSlowness);
  if (m_kind == SinkKind::kBlocking) m_released.Wait();
  if (m_kind == SinkKind::kHolding) {
    const CAutoLock lock(m_recordLock);
    m_held.emplace_back(sample);
  }
  return m_kind == SinkKind::kRefusing ? VFW_E_SAMPLE_REJECTED : S_OK;
}

void SinkFilter::Record(SinkEvent event) {
  const CAutoLock lock(m_recordLock);
  if (event.kind == SinkEvent::Kind::kBeginFlush) m_isFlushing = true;
  if (event.kind == SinkEvent::Kind::kEndFlush) m_isFlushing = false;
  m_events.push_back(std::move(event));
}

bool SinkFilter::RecordUnlessFlushing(SinkEvent event) {
  const CAutoLock lock(m_recordLock);
  if (m_isFlushing) return false;
  m_events.push_back(std::move(event));
  return true;
}

void SinkFilter::End() {
  Arrive();
  Record({.kind = SinkEvent::Kind::kEndOfStream});
  m_isOver = true;
  m_ended.Set();
}

void SinkFilter::Unblock() {
  m_released.Set();
  LetGo();
}

void SinkFilter::Block() { m_released.Clear(); }

SinkPin::SinkPin(SinkFilter* filter, CCritSec* lock)
    : CBaseInputPin("SinkPin", filter, lock, OLESTR("In")), m_sink(*filter) {}

HRESULT SinkPin::CheckMediaType(const CMediaType* /*type*/) { return m_refuseTypes ? S_FALSE : S_OK; }

HRESULT SinkPin::Active() {
  m_sink.Begin();
  m_sink.Block();
  return CBaseInputPin::Active();
}

HRESULT SinkPin::Inactive() {
  m_sink.Unblock();
  return CBaseInputPin::Inactive();
}

HRESULT STDMETHODCALLTYPE SinkPin::Receive(IMediaSample* pSample) {
  const HRESULT result = CBaseInputPin::Receive(pSample);
  return result == S_OK ? m_sink.Take(pSample) : result;
}

HRESULT STDMETHODCALLTYPE SinkPin::EndOfStream() {
  m_sink.End();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE SinkPin::BeginFlush() {
  if (m_sink.m_beforeFlush) m_sink.m_beforeFlush();
  m_sink.Record({.kind = SinkEvent::Kind::kBeginFlush});
  const HRESULT result = CBaseInputPin::BeginFlush();
  m_sink.Unblock();
  return result;
}

HRESULT STDMETHODCALLTYPE SinkPin::EndFlush() {
  m_sink.Record({.kind = SinkEvent::Kind::kEndFlush});
  m_sink.Begin();  // an end that crossed with the flush is dropped by it
  m_sink.m_ended.Clear();
  m_sink.Block();
  return CBaseInputPin::EndFlush();
}

HRESULT STDMETHODCALLTYPE SinkPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) {
  m_sink.Arrive();
  m_sink.Record({.kind = SinkEvent::Kind::kNewSegment, .start = tStart, .stop = tStop, .rate = dRate});
  return CBaseInputPin::NewSegment(tStart, tStop, dRate);
}

}  // namespace tarvex::test
