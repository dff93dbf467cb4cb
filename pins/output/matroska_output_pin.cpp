// The output pin: its connection and the life of its queue on application threads, frames and the end of the stream
// on the worker.
#include "pins/output/matroska_output_pin.h"

#include <cinttypes>
#include <cstring>
#include <utility>

#include "framework/com_boundary.h"
#include "framework/log.h"
#include "pins/limits.h"
#include "pins/output/frame_times.h"

namespace tarvex {

namespace {

constexpr LONG kQueueBatch = 200;
constexpr LONG kQueueList = 200;

}  // namespace

CMatroskaOutputPin::CMatroskaOutputPin(const char* objectName, const SharedByPins& shared, const WideString& name)
    : CBaseOutputPin(objectName, &shared.filter, shared.filter.FilterLock(), name.c_str()),
      m_shared(shared),
      m_sender(shared.pass, shared.memory),
      m_seeking(*this, m_track, shared) {}

CMatroskaOutputPin::~CMatroskaOutputPin() = default;

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IMediaSeeking) return GiveInterface(&m_seeking, out);
  return CBaseOutputPin::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::Disconnect() {
  if (const auto filter = HoldFilter(); filter) Positions().ClearSeekingOwner();
  return CBaseOutputPin::Disconnect();
}

HRESULT CMatroskaOutputPin::SetTrack(const TrackPinInfo& track) {
  if (IsConnected()) return VFW_E_ALREADY_CONNECTED;
  return ComBoundary([&] {
    m_track.Set(track);
    IncrementTypeVersion();
    return S_OK;
  });
}

void CMatroskaOutputPin::SetH264Form(bool byteStream) {
  if (!m_track.IsVideo()) return;
  m_track.SetH264Form(byteStream);
  IncrementTypeVersion();
}

HRESULT CMatroskaOutputPin::CheckMediaType(const CMediaType* type) {
  return m_track.HasMediaType(*type) ? S_OK : S_FALSE;
}

HRESULT CMatroskaOutputPin::GetMediaType(int position, CMediaType* type) {
  if (position > 0) return VFW_S_NO_MORE_ITEMS;
  return ComBoundary([&] {
    *type = m_track.MediaType();
    return S_OK;
  });
}

HRESULT CMatroskaOutputPin::DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator) {
  *allocator = nullptr;
  return ComBoundary([&] {
    const auto buffer = MakeCom<CSampleBuffer>();
    ALLOCATOR_PROPERTIES request{};
    HRESULT hr = DecideBufferSize(buffer.Get(), &request);
    if (SUCCEEDED(hr)) hr = peer->NotifyAllocator(buffer.Get(), TRUE);
    if (FAILED(hr)) return hr;
    ComPtr<IMemAllocator>(buffer).CopyTo(allocator);
    m_sender.SetBuffer(buffer);
    return S_OK;
  });
}

HRESULT CMatroskaOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
  request->cBuffers = limits::kRingBuffers;
  request->cbBuffer = limits::kRingBufferBytes;
  request->cbAlign = 1;
  request->cbPrefix = 0;
  ALLOCATOR_PROPERTIES actual{};
  return allocator->SetProperties(request, &actual);
}

HRESULT CMatroskaOutputPin::BreakConnect() {
  const HRESULT hr = CBaseOutputPin::BreakConnect();
  if (FAILED(hr)) return hr;
  m_sender.SetBuffer(nullptr);
  return S_OK;
}

HRESULT CMatroskaOutputPin::Active() {
  DropHeld();
  ResetForSeek();
  HRESULT hr = S_OK;
  if (IsConnected()) {
    hr = CBaseOutputPin::Active();
    if (SUCCEEDED(hr)) {
      hr = CreateOutputQueue();
      if (FAILED(hr)) {
        CBaseOutputPin::Inactive();
        return hr;
      }
    }
  }
  LogText("CMatroskaOutputPin::Active");
  return hr;
}

HRESULT CMatroskaOutputPin::CreateOutputQueue() {
  return ComBoundary([&] {
    HRESULT hr = S_OK;
    auto queue = std::make_shared<COutputQueue>(GetConnected(), &hr, kQueueBatch, kQueueList);
    if (FAILED(hr)) queue.reset();
    m_sender.SetQueue(std::move(queue));
    return hr;
  });
}

HRESULT CMatroskaOutputPin::Inactive() {
  const HRESULT hr = CBaseOutputPin::Inactive();
  m_sender.SetQueue(nullptr);
  {
    const CAutoLock hold(m_streamLock);
    m_endOfStream = EndOfStreamState::kOpen;
  }
  DropHeld();
  LogText("CMatroskaOutputPin::Inactive");
  return hr;
}

bool CMatroskaOutputPin::OnData(const FrameInfo& frame) {
  m_ownFailure = kNoQueue;
  if (!m_sender.HasQueue()) return false;
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
  if (EndOf(frame) <= Positions().Stop()) return false;
  DeliverEndOfStream();
  return true;
}

bool CMatroskaOutputPin::HoldFrame(const FrameInfo& frame) { return Gate().Hold(*this, frame); }

void CMatroskaOutputPin::Reserve(std::span<const std::size_t> sizes) {
  if (Gate().IsHolding() || IsEndOfStreamSent()) return m_sender.DropReserved();
  m_sender.Reserve(sizes);
}

HRESULT CMatroskaOutputPin::DeliverRelative(const FrameInfo& frame) {
  return DeliverFrameSample(frame.data, frame.size, SubtractTimes(StartOf(frame), Positions().Start()),
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

  ComPtr<CMediaSample> sample;
  const HRESULT hr = SampleFor(data, size, sample);
  if (FAILED(hr)) return hr;
  const bool isFirst = m_discontinuityPending;
  if (isFirst) StartSegment();
  DWORD flags = 0;
  if (splice) flags |= AM_SAMPLE_SPLICEPOINT;
  if (isFirst) flags |= AM_SAMPLE_DATADISCONTINUITY;
  if (tStart < 0 && tStop < 0) flags |= AM_SAMPLE_PREROLL;
  sample->Describe(tStart, tStop, flags);
  if (m_track.IsVideo()) {
    LogFormat("DeliverFrameSample tStart: %" PRId64 " tStop: %" PRId64 " splice: %d", std::int64_t{tStart},
              std::int64_t{tStop}, splice ? 1 : 0);
  }
  return isFirst ? m_sender.SendNow(std::move(sample)) : m_sender.Send(std::move(sample));
}

HRESULT CMatroskaOutputPin::SampleFor(const std::uint8_t* data, std::size_t size, ComPtr<CMediaSample>& sample) {
  HRESULT hr = S_OK;
  if (size >= limits::kLargeFrame) hr = m_sender.GetSampleOver(sample.Put(), data, size);
  if (SUCCEEDED(hr) && sample) return S_OK;
  if (SUCCEEDED(hr)) hr = GetDeliveryBuffer(sample.Put(), size);
  // Downstream decommits the ring as it stops, and whoever cancels a wait knows why.
  if (FAILED(hr) && hr != VFW_E_NOT_COMMITTED && hr != VFW_E_WRONG_STATE) m_ownFailure = hr;
  if (SUCCEEDED(hr) && size != 0) std::memcpy(sample->Buffer(), data, size);
  return hr;
}

HRESULT CMatroskaOutputPin::GetDeliveryBuffer(CMediaSample** sample, std::size_t size) {
  return m_sender.GetSample(sample, size);
}

// The first sample after a start or a flush tells downstream of the segment it belongs to.
void CMatroskaOutputPin::StartSegment() {
  {
    const CAutoLock hold(m_streamLock);
    m_discontinuityPending = false;
  }
  m_sender.SendUnsent();
  const PlayRange range = Positions().Segment();
  DeliverNewSegment(range.start, range.stop, range.rate);
}

HRESULT CMatroskaOutputPin::DeliverHeld(const FrameInfo& frame) { return DeliverRelative(frame); }

// What keeps the frame from being delivered at all, delivery itself tells.
std::optional<HRESULT> CMatroskaOutputPin::TryDeliverHeld(const FrameInfo& frame) {
  const REFERENCE_TIME start = SubtractTimes(StartOf(frame), Positions().Start());
  const bool isSent = !IsDroppedAsEarly(start, AddTimes(start, DurationOf(frame)));
  if (isSent && !m_sender.HasRoomFor(frame.size)) return std::nullopt;
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

void CMatroskaOutputPin::DropHeld() {
  const CAutoLock hold(m_streamLock);
  Gate().Drop(*this);
  if (m_endOfStream == EndOfStreamState::kBehindHeld) m_endOfStream = EndOfStreamState::kOpen;
}

void CMatroskaOutputPin::ResetForSeek() {
  const CAutoLock hold(m_streamLock);
  m_discontinuityPending = true;
  m_endOfStream = EndOfStreamState::kOpen;
}

void CMatroskaOutputPin::CancelWaits(bool on) {
  if (const auto buffer = m_sender.Buffer(); buffer) buffer->CancelWaits(on);
}

HRESULT CMatroskaOutputPin::Deliver(IMediaSample* sample) {
  auto owner = ComPtr<IMediaSample>::Attach(sample);
  const auto queue = Queue();
  return queue ? queue->Receive(owner.Detach()) : VFW_E_WRONG_STATE;
}

HRESULT CMatroskaOutputPin::DeliverEndOfStream() {
  BeforeWait();  // what is on its way comes before the end
  const auto queue = Queue();
  if (!queue) return S_OK;
  queue->SendAnyway();
  {
    const CAutoLock hold(m_streamLock);
    if (IsEndOfStreamSent()) return S_OK;
    // Nothing may come after the end, so it waits for what is held back.
    m_endOfStream = Gate().Holds(*this) ? EndOfStreamState::kBehindHeld : EndOfStreamState::kSent;
    if (m_endOfStream != EndOfStreamState::kSent) return S_OK;
  }
  queue->EOS();
  return S_OK;
}

HRESULT CMatroskaOutputPin::DeliverBeginFlush() {
  if (const auto buffer = m_sender.Buffer(); buffer) buffer->BeginFlush();
  if (const auto queue = Queue(); queue) queue->BeginFlush();
  return S_OK;
}

// A peer that was stopped alone has decommitted the ring, and may have been started again meanwhile. Where that
// fails the next sample tells.
HRESULT CMatroskaOutputPin::DeliverEndFlush() {
  const auto queue = Queue();
  if (queue) queue->EndFlush();
  if (const auto buffer = m_sender.Buffer(); buffer) {
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
