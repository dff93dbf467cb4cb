// The video pin.
#include "pins/output/matroska_video_pin.h"

#include <algorithm>
#include <limits>

#include "framework/com_boundary.h"
#include "framework/log.h"
#include "pins/output/pin_seeking.h"

namespace tarvex {

namespace {

constexpr char kAvcCodec[] = "V_MPEG4/ISO/AVC";

REFERENCE_TIME FrameStart(const FrameInfo& frame) { return static_cast<REFERENCE_TIME>(frame.start); }

REFERENCE_TIME EndOf(const FrameInfo& frame) {
  return AddTimes(FrameStart(frame), static_cast<REFERENCE_TIME>(frame.duration));
}

}  // namespace

CMatroskaVideoPin::CMatroskaVideoPin(CBaseFilter* filter, CCritSec* lock, PinHost* host, HRESULT* result,
                                     const WideString& name)
    : CMatroskaOutputPin("CMatroskaVideoPin", Kind::kVideo, filter, lock, host, result, name) {}

// The form is that of the connection; what the pin offers may have changed since.
HRESULT CMatroskaVideoPin::Active() {
  const HRESULT result = ComBoundary([this] {
    m_annexB.reset();
    if (Track().codecId == kAvcCodec) m_annexB = CAnnexBConverter::For(CurrentMediaType());
    return S_OK;
  });
  return FAILED(result) ? result : CMatroskaOutputPin::Active();
}

bool CMatroskaVideoPin::OnData(const FrameInfo& frame) {
  const bool taken = CMatroskaOutputPin::OnData(m_annexB ? m_annexB->Convert(frame) : frame);
  if (!taken && Refusal() == VFW_E_NOT_COMMITTED && !Queue()) LogText("CMatroskaVideoPin::OnData m_pOutputQ == NULL");
  return taken;
}

void CMatroskaVideoPin::ResetForSeek() {
  CMatroskaOutputPin::ResetForSeek();
  {
    const CAutoLock hold(StreamLock());
    m_waitForKeyFrame = true;
    m_stopReached = false;
  }
  if (IsConnected()) Host().SetHoldingOnAllPins(true);
}

bool CMatroskaVideoPin::IsPastStop(const FrameInfo& frame) {
  const REFERENCE_TIME stop = Host().StopPosition();
  if (!m_stopReached && EndOf(frame) <= stop) return IsEndOfStreamSent();
  {
    const CAutoLock hold(StreamLock());
    if (IsEndOfStreamSent()) return true;
    if (EndOf(frame) > stop) m_stopReached = true;
    if (!m_stopReached || FrameStart(frame) <= stop) return false;
  }
  BeforeWait();
  DeliverEndOfStream();
  return true;
}

bool CMatroskaVideoPin::HoldFrame(const FrameInfo& frame) {
  if (!m_waitForKeyFrame && !IsHolding()) return false;
  const REFERENCE_TIME wanted = Host().Range().start;
  std::optional<SegmentChoice> choice;
  {
    const CAutoLock hold(StreamLock());
    if (m_waitForKeyFrame && !frame.keyFrame) return true;
    m_waitForKeyFrame = false;
    if (!IsHolding()) return false;
    choice = AddHeld(frame, wanted);
  }
  if (!choice) return true;
  Host().SetStartPosition(choice->start);
  // A pin that cannot deliver refuses its next frame as well, and that ends the pass.
  static_cast<void>(Host().ReleaseHeldFrames(choice->firstFrame));
  Host().SetHoldingOnAllPins(false);
  return true;
}

// Two key frames show that the group of pictures before the wanted time is whole. A later frame might be
// nearer to that time as long as none is beyond it; a start at zero needs no such care.
std::optional<CMatroskaVideoPin::SegmentChoice> CMatroskaVideoPin::AddHeld(const FrameInfo& frame,
                                                                           REFERENCE_TIME wanted) {
  m_pending.Add(frame);
  m_pending.TrimToKeyFrameBefore(wanted);
  if (!m_pending.HasTwoKeyFrames()) return std::nullopt;
  REFERENCE_TIME start = 0;
  if (!m_pending.PickStart(wanted, false, start) && wanted != 0) return std::nullopt;
  return SegmentChoice{start, m_pending.FirstStart()};
}

// The best start that the held frames allow when no more will come; none without frames.
std::optional<CMatroskaVideoPin::SegmentChoice> CMatroskaVideoPin::LastChoice(REFERENCE_TIME wanted) const {
  if (m_pending.IsEmpty()) return std::nullopt;
  REFERENCE_TIME start = std::min(wanted, m_pending.LatestStart());
  static_cast<void>(m_pending.PickStart(start, true, start));  // nothing found: it stays
  return SegmentChoice{start, m_pending.FirstStart()};
}

HRESULT CMatroskaVideoPin::ReleaseWithLastChoice() {
  const REFERENCE_TIME wanted = Host().Range().start;
  std::optional<SegmentChoice> choice;
  {
    const CAutoLock hold(StreamLock());
    choice = LastChoice(wanted);
  }
  // Without a picture to start with the other pins still deliver all they have.
  REFERENCE_TIME firstFrame = std::numeric_limits<REFERENCE_TIME>::min();
  if (choice) {
    Host().SetStartPosition(choice->start);
    firstFrame = choice->firstFrame;
  }
  const HRESULT result = Host().ReleaseHeldFrames(firstFrame);
  if (SUCCEEDED(result)) Host().SetHoldingOnAllPins(false);
  return result;
}

// A pin that cannot deliver refuses its next frame as well, and that ends the pass.
void CMatroskaVideoPin::EndHolding() {
  if (FAILED(ReleaseWithLastChoice())) Host().SetHoldingOnAllPins(false);
}

HRESULT CMatroskaVideoPin::DeliverEndOfStream() {
  const HRESULT result = ReleaseWithLastChoice();
  return FAILED(result) ? result : CMatroskaOutputPin::DeliverEndOfStream();
}

}  // namespace tarvex
