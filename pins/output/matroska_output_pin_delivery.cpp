// The output pin's way from frame to queued sample, holding back, flushing and the end of the stream. The
// worker, but for flushes and cancelling.
#include <cinttypes>
#include <cstring>
#include <span>
#include <utility>

#include "framework/log.h"
#include "pins/output/matroska_output_pin.h"
#include "pins/output/pin_seeking.h"

namespace tarvex {

namespace {

// So many samples go into the queue together: few enough to come soon, many enough to share the lock's cost.
constexpr std::size_t kMostUnsent = 32;

REFERENCE_TIME StartOf(const FrameInfo& frame) { return static_cast<REFERENCE_TIME>(frame.start); }

REFERENCE_TIME DurationOf(const FrameInfo& frame) { return static_cast<REFERENCE_TIME>(frame.duration); }

}  // namespace

// Looked up once for many frames. The worker keeps it until it has to wait, or until it is another one; then what
// was meant for the former is dropped, as that queue drops what it has.
void CMatroskaOutputPin::LookUpRoute() {
  m_unsent.clear();
  DropReserved();
  Route route;
  {
    const CAutoLock hold(m_streamLock);
    m_routeChanged.store(false, std::memory_order_relaxed);
    route = {m_pOutputQ, m_sampleBuffer};
  }
  std::swap(m_route, route);
}

bool CMatroskaOutputPin::OnData(const FrameInfo& frame) {
  m_ownFailure = kNoQueue;
  if (!CurrentRoute().queue) return false;
  m_ownFailure = S_OK;
  const HRESULT hr = ProcessFrame(frame);
  if (SUCCEEDED(hr)) return true;
  LogFormat("CMatroskaVideoPin::OnData %x", static_cast<unsigned>(hr));
  return false;
}

HRESULT CMatroskaOutputPin::ProcessFrame(const FrameInfo& frame) {
  if (IsPastStop(frame) || HoldFrame(frame)) return S_OK;
  return DeliverRelative(frame);
}

bool CMatroskaOutputPin::IsPastStop(const FrameInfo& frame) {
  if (IsEndOfStreamSent()) return true;
  if (AddTimes(StartOf(frame), DurationOf(frame)) <= m_host->StopPosition()) return false;
  BeforeWait();
  DeliverEndOfStream();
  return true;
}

bool CMatroskaOutputPin::HoldFrame(const FrameInfo& frame) { return m_host->Gate().Hold(*this, frame); }

void CMatroskaOutputPin::DropHeld() {
  const CAutoLock hold(m_streamLock);
  m_host->Gate().Drop(*this);
  if (m_endOfStream == EndOfStreamState::kBehindHeld) m_endOfStream = EndOfStreamState::kOpen;
}

void CMatroskaOutputPin::ResetForSeek() {
  const CAutoLock hold(m_streamLock);
  m_discontinuityPending = true;
  m_endOfStream = EndOfStreamState::kOpen;
}

void CMatroskaOutputPin::CancelWaits(bool on) {
  if (const auto buffer = Buffer(); buffer) buffer->CancelWaits(on);
}

HRESULT CMatroskaOutputPin::DeliverHeld(const FrameInfo& frame) { return DeliverRelative(frame); }

std::optional<HRESULT> CMatroskaOutputPin::TryDeliverHeld(const FrameInfo& frame) {
  if (!HasRoomFor(frame)) return std::nullopt;
  return DeliverRelative(frame);
}

// The end of the stream may have come while frames were held.
void CMatroskaOutputPin::OnHeldDelivered() {
  BeforeWait();
  const auto queue = Queue();
  if (!queue) return;
  {
    const CAutoLock hold(m_streamLock);
    if (m_endOfStream != EndOfStreamState::kBehindHeld) return;
    m_endOfStream = EndOfStreamState::kSent;
  }
  queue->EOS();
}

HRESULT CMatroskaOutputPin::DeliverRelative(const FrameInfo& frame) {
  return DeliverFrameSample(frame.data, frame.size, SubtractTimes(StartOf(frame), m_host->StartPosition()),
                            DurationOf(frame), frame.keyFrame);
}

// A decoder needs early pictures for the later ones; nothing needs early sound.
bool CMatroskaOutputPin::IsDroppedAsEarly(REFERENCE_TIME start, REFERENCE_TIME stop) const {
  return start < 0 && stop < 0 && CurrentMediaType().majortype != MEDIATYPE_Video;
}

HRESULT CMatroskaOutputPin::DeliverFrameSample(const std::uint8_t* data, std::size_t size, REFERENCE_TIME start,
                                               REFERENCE_TIME duration, bool splice) {
  REFERENCE_TIME tStart = start;
  REFERENCE_TIME tStop = AddTimes(start, duration);
  if (IsDroppedAsEarly(tStart, tStop)) return S_OK;

  ComPtr<IMediaSample> sample;
  HRESULT hr = GetDeliveryBuffer(sample.Put(), size);
  if (FAILED(hr)) {
    // Downstream decommits the ring as it stops, and whoever cancels a wait knows why.
    if (hr != VFW_E_NOT_COMMITTED && hr != VFW_E_WRONG_STATE) m_ownFailure = hr;
    return hr;
  }
  hr = FillSample(*sample, data, size);
  if (FAILED(hr)) return hr;
  sample->SetSyncPoint(splice ? TRUE : FALSE);
  const bool isFirst = StartSegment(*sample);
  if (tStart < 0 && tStop < 0) sample->SetPreroll(TRUE);
  sample->SetTime(&tStart, &tStop);
  if (m_kind == Kind::kVideo) {
    LogFormat("DeliverFrameSample tStart: %" PRId64 " tStop: %" PRId64 " splice: %d", std::int64_t{tStart},
              std::int64_t{tStop}, splice ? 1 : 0);
  }
  return Send(std::move(sample), isFirst);
}

// Released at once: when the first sample comes, somebody waits for it. More are put into the queue some at a
// time, and its thread is woken when much is there or when the worker has to wait.
HRESULT CMatroskaOutputPin::Send(ComPtr<IMediaSample> sample, bool isFirst) {
  const Route& route = CurrentRoute();
  if (!route.queue) return VFW_E_WRONG_STATE;
  if (isFirst || !m_host->WakesBeforeWaits()) {
    return route.queue->Send(std::span(&sample, 1), COutputQueue::Waking::kNow);
  }
  m_unsent.push_back(std::move(sample));
  return m_unsent.size() < kMostUnsent ? route.queue->Refusal() : SendUnsent();
}

HRESULT CMatroskaOutputPin::SendUnsent() {
  if (m_unsent.empty()) return S_OK;
  HRESULT hr = S_OK;
  // An end that came in between, by a call from upstream, is the end.
  if (const Route& route = CurrentRoute();
      route.queue && !m_unsent.empty() && m_endOfStream != EndOfStreamState::kSent) {
    hr = route.queue->Send(m_unsent, COutputQueue::Waking::kWhenMuch);
  }
  m_unsent.clear();
  return hr;
}

void CMatroskaOutputPin::BeforeWait() {
  SendUnsent();
  DropReserved();
  m_route = {};
  if (const auto queue = Queue(); queue) queue->Wake();
}

HRESULT CMatroskaOutputPin::FillSample(IMediaSample& sample, const std::uint8_t* data, std::size_t size) {
  BYTE* bytes = nullptr;
  const HRESULT hr = sample.GetPointer(&bytes);
  if (FAILED(hr)) return hr;
  if (size != 0) std::memcpy(bytes, data, size);
  return sample.SetActualDataLength(static_cast<LONG>(size));
}

// The first sample after a start or a flush tells downstream of the segment it belongs to. True for that.
bool CMatroskaOutputPin::StartSegment(IMediaSample& sample) {
  if (!m_discontinuityPending) return false;
  {
    const CAutoLock hold(m_streamLock);
    m_discontinuityPending = false;
  }
  sample.SetDiscontinuity(TRUE);
  SendUnsent();
  const PlayRange range = m_host->Segment();
  DeliverNewSegment(range.start, range.stop, range.rate);
  return true;
}

void CMatroskaOutputPin::Reserve(std::span<const FrameInfo> frames) {
  DropReserved();
  if (m_host->Gate().IsHolding() || IsEndOfStreamSent()) return;
  if (const auto buffer = CurrentRoute().buffer; buffer) ReserveFrom(*buffer, frames);
}

void CMatroskaOutputPin::ReserveFrom(CSampleBuffer& buffer, std::span<const FrameInfo> frames) {
  m_sizes.clear();
  for (const FrameInfo& frame : frames) m_sizes.push_back(frame.size);
  m_reserved.reserve(frames.size());
  buffer.GetSamples(m_sizes, m_reserved);
}

// Delivering the frame does not wait. What keeps it from being delivered at all, delivery itself tells.
bool CMatroskaOutputPin::HasRoomFor(const FrameInfo& frame) {
  const REFERENCE_TIME start = SubtractTimes(StartOf(frame), m_host->StartPosition());
  if (IsDroppedAsEarly(start, AddTimes(start, DurationOf(frame)))) return true;
  DropReserved();
  const auto buffer = CurrentRoute().buffer;
  if (!buffer) return true;
  ReserveFrom(*buffer, std::span(&frame, 1));
  return !m_reserved.empty();
}

void CMatroskaOutputPin::DropReserved() {
  m_reserved.clear();
  m_nextReserved = 0;
}

// A frame may have been dropped, or have become larger; then the others' samples are for nobody.
bool CMatroskaOutputPin::TakeReserved(IMediaSample** sample, std::size_t size) {
  if (m_nextReserved == m_reserved.size()) return false;
  const bool fits = static_cast<std::size_t>(m_reserved[m_nextReserved]->GetSize()) == size;
  if (fits) {
    *sample = m_reserved[m_nextReserved++].Detach();
  } else {
    DropReserved();
  }
  return fits;
}

HRESULT CMatroskaOutputPin::GetDeliveryBuffer(IMediaSample** sample, std::size_t size) {
  const Route& route = CurrentRoute();
  if (TakeReserved(sample, size)) return S_OK;
  if (!route.buffer) return VFW_E_NO_ALLOCATOR;
  const HRESULT hr = route.buffer->GetSample(sample, size, false);
  if (hr != S_FALSE) return hr;
  const auto buffer = route.buffer;  // the route goes before the wait
  m_host->BeforeWait();
  return buffer->GetSample(sample, size, true);
}

HRESULT CMatroskaOutputPin::Deliver(IMediaSample* sample) {
  auto owner = ComPtr<IMediaSample>::Attach(sample);
  const auto queue = Queue();
  return queue ? queue->Receive(owner.Detach()) : VFW_E_WRONG_STATE;
}

HRESULT CMatroskaOutputPin::DeliverEndOfStream() {
  const auto queue = Queue();
  if (!queue) return S_OK;
  queue->SendAnyway();
  {
    const CAutoLock hold(m_streamLock);
    if (IsEndOfStreamSent()) return S_OK;
    // Nothing may come after the end, so it waits for what is held back.
    m_endOfStream = m_host->Gate().Holds(*this) ? EndOfStreamState::kBehindHeld : EndOfStreamState::kSent;
    if (m_endOfStream != EndOfStreamState::kSent) return S_OK;
  }
  queue->EOS();
  return S_OK;
}

HRESULT CMatroskaOutputPin::DeliverBeginFlush() {
  if (const auto buffer = Buffer(); buffer) buffer->BeginFlush();
  if (const auto queue = Queue(); queue) queue->BeginFlush();
  return S_OK;
}

// A peer that was stopped alone has decommitted the ring, and may have been started again meanwhile. Where that
// fails the next sample tells.
HRESULT CMatroskaOutputPin::DeliverEndFlush() {
  const auto queue = Queue();
  if (queue) queue->EndFlush();
  if (const auto buffer = Buffer(); buffer) {
    if (queue) static_cast<void>(buffer->Commit());
    buffer->EndFlush();
  }
  DropHeld();
  ResetForSeek();
  return S_OK;
}

HRESULT CMatroskaOutputPin::DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  if (const auto queue = Queue(); queue) queue->NewSegment(start, stop, rate);
  return S_OK;
}

}  // namespace tarvex
