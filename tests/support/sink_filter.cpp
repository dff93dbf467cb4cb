// See sink_filter.h.
#include "tests/support/sink_filter.h"

#include <cstring>
#include <utility>

#include "tests/support/digest.h"

namespace tarvex::test {
namespace {

constexpr DWORD kSlowness = 5;  // milliseconds

SinkEvent Describe(IMediaSample* sample, bool withChecksum) {
  SinkEvent event;
  sample->GetTime(&event.start, &event.stop);
  event.key = sample->IsSyncPoint() == S_OK;
  event.discontinuity = sample->IsDiscontinuity() == S_OK;
  event.preroll = sample->IsPreroll() == S_OK;
  event.size = static_cast<std::uint32_t>(sample->GetActualDataLength());
  BYTE* data = nullptr;
  if (FAILED(sample->GetPointer(&data))) return event;
  if (event.size >= sizeof(event.origin)) std::memcpy(&event.origin, data, sizeof(event.origin));
  if (withChecksum) event.sha1 = HexDigest(DigestAlgorithm::kSha1, {data, event.size});
  return event;
}

}  // namespace

const char* NameOf(SinkKind kind) {
  static constexpr const char* kNames[] = {"recording", "counting", "forgetful", "slow", "holding", "blocking"};
  return kNames[static_cast<int>(kind)];
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
  return m_counts.at(static_cast<std::size_t>(kind));
}

void SinkFilter::Clear() {
  const CAutoLock lock(m_recordLock);
  m_events.clear();
  m_counts = {};
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
  m_afterEnd += m_isOver ? 1 : 0;
  // A flush may have begun since the pin looked.
  if (!Record(Describe(sample, m_kind == SinkKind::kRecording), false)) return S_FALSE;
  m_sampled.Set();
  if (m_onSample) m_onSample(sample);
  if (m_answer) return m_answer(sample);
  if (m_kind == SinkKind::kSlow) m_released.Wait(kSlowness);
  if (m_kind == SinkKind::kBlocking) m_released.Wait();
  if (m_kind == SinkKind::kHolding) {
    const CAutoLock lock(m_recordLock);
    m_held.emplace_back(sample);
  }
  return S_OK;
}

// False where a flush keeps it out.
bool SinkFilter::Record(SinkEvent event, bool passesFlush) {
  const CAutoLock lock(m_recordLock);
  if (event.kind == SinkEvent::Kind::kBeginFlush) m_pin.m_isFlushing = true;
  if (event.kind == SinkEvent::Kind::kEndFlush) m_pin.m_isFlushing = false;
  if (m_pin.m_isFlushing && !passesFlush) return false;
  ++m_counts.at(static_cast<std::size_t>(event.kind));
  if (m_kind != SinkKind::kForgetful) m_events.push_back(std::move(event));
  return true;
}

void SinkFilter::Unblock() {
  m_released.Set();
  LetGo();
}

SinkPin::SinkPin(SinkFilter& sink) : PlainPin(sink, PINDIR_INPUT), m_sink(sink) {}

HRESULT STDMETHODCALLTYPE SinkPin::QueryInterface(REFIID iid, void** out) {
  if (iid != IID_IMemInputPin) return PlainPin::QueryInterface(iid, out);
  *out = static_cast<IMemInputPin*>(this);
  AddRef();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE SinkPin::ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) {
  const HRESULT answer = m_sink.Ask(SinkCall::kConnection);
  return FAILED(answer) ? answer : PlainPin::ReceiveConnection(pConnector, pmt);
}

HRESULT STDMETHODCALLTYPE SinkPin::GetAllocator(IMemAllocator** ppAllocator) {
  m_allocator.CopyTo(ppAllocator);
  return m_allocator ? S_OK : VFW_E_NO_ALLOCATOR;
}

HRESULT STDMETHODCALLTYPE SinkPin::NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) {
  const HRESULT answer = m_sink.Ask(SinkCall::kAllocator);
  if (FAILED(answer)) return answer;
  m_allocator = ComPtr<IMemAllocator>(pAllocator);
  m_isReadOnly = bReadOnly != FALSE;
  return S_OK;
}

void SinkPin::Begin() {
  m_sink.m_isOver = false;
  m_sink.m_released.Clear();
}

// A renderer gives up the memory of its connection when it stops.
void SinkPin::End() {
  m_sink.Unblock();
  m_isFlushing = false;
  if (m_allocator) m_allocator->Decommit();
  if (!IsConnected()) m_allocator.Reset();
}

HRESULT STDMETHODCALLTYPE SinkPin::Receive(IMediaSample* pSample) {
  if (!IsConnected()) return VFW_E_NOT_CONNECTED;
  if (m_isFlushing) return S_FALSE;
  if (IsStopped()) return VFW_E_WRONG_STATE;
  const HRESULT answer = m_sink.Ask(SinkCall::kSample);
  return answer == S_OK ? m_sink.Take(pSample) : answer;
}

HRESULT STDMETHODCALLTYPE SinkPin::ReceiveMultiple(IMediaSample** pSamples, LONG nSamples, LONG* nSamplesProcessed) {
  HRESULT result = S_OK;
  for (*nSamplesProcessed = 0; *nSamplesProcessed < nSamples; ++*nSamplesProcessed) {
    result = Receive(pSamples[*nSamplesProcessed]);
    if (result != S_OK) break;
  }
  return result;
}

HRESULT STDMETHODCALLTYPE SinkPin::EndOfStream() {
  m_sink.m_afterEnd += m_sink.m_isOver ? 1 : 0;
  m_sink.Record({.kind = SinkEvent::Kind::kEndOfStream});
  m_sink.m_isOver = true;
  m_sink.m_ended.Set();
  return m_sink.Ask(SinkCall::kEndOfStream);
}

HRESULT STDMETHODCALLTYPE SinkPin::BeginFlush() {
  const HRESULT answer = m_sink.Ask(SinkCall::kBeginFlush);
  m_sink.Record({.kind = SinkEvent::Kind::kBeginFlush});
  m_sink.Unblock();
  return answer;
}

HRESULT STDMETHODCALLTYPE SinkPin::EndFlush() {
  m_sink.Record({.kind = SinkEvent::Kind::kEndFlush});
  m_sink.m_ended.Clear();  // an end that crossed with the flush is dropped by it
  Begin();
  return m_sink.Ask(SinkCall::kEndFlush);
}

HRESULT STDMETHODCALLTYPE SinkPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) {
  m_sink.m_afterEnd += m_sink.m_isOver ? 1 : 0;
  m_sink.Record({.kind = SinkEvent::Kind::kNewSegment, .start = tStart, .stop = tStop, .rate = dRate});
  return m_sink.Ask(SinkCall::kNewSegment);
}

}  // namespace tarvex::test
