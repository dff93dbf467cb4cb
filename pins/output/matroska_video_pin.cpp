// Key frames, the stop in decoding order, and start codes: what video asks for beside the base.
#include "pins/output/matroska_video_pin.h"

#include "framework/com_boundary.h"
#include "framework/log.h"
#include "pins/output/frame_times.h"

namespace tarvex {

namespace {

constexpr char kAvcCodec[] = "V_MPEG4/ISO/AVC";

}  // namespace

CMatroskaVideoPin::CMatroskaVideoPin(const SharedByPins& shared, const WideString& name)
    : CMatroskaOutputPin("CMatroskaVideoPin", shared, name) {}

// The form is that of the connection; what the pin offers may have changed since.
HRESULT CMatroskaVideoPin::Active() {
  const HRESULT result = ComBoundary([this] {
    m_annexB.reset();
    if (Track().Copy().codecId == kAvcCodec) m_annexB = AnnexBConverter::For(CurrentMediaType());
    return S_OK;
  });
  return FAILED(result) ? result : CMatroskaOutputPin::Active();
}

bool CMatroskaVideoPin::OnData(const FrameInfo& frame) {
  const bool taken = CMatroskaOutputPin::OnData(m_annexB ? m_annexB->Convert(frame) : frame);
  if (!taken && OwnFailure() == kNoQueue) LogText("CMatroskaVideoPin::OnData m_pOutputQ == NULL");
  return taken;
}

void CMatroskaVideoPin::Reserve(std::span<const std::size_t> sizes) {
  if (!m_annexB) CMatroskaOutputPin::Reserve(sizes);
}

void CMatroskaVideoPin::ResetForSeek() {
  CMatroskaOutputPin::ResetForSeek();
  {
    const CAutoLock hold(StreamLock());
    m_waitForKeyFrame = true;
    m_stopReached = false;
  }
  if (IsConnected()) Gate().SetHolding(true);
}

void CMatroskaVideoPin::WaitForKeyFrame() {
  const CAutoLock hold(StreamLock());
  m_waitForKeyFrame = true;
}

bool CMatroskaVideoPin::IsPastStop(const FrameInfo& frame) {
  const REFERENCE_TIME stop = Positions().Stop();
  if (!m_stopReached && EndOf(frame) <= stop) return IsEndOfStreamSent();
  {
    const CAutoLock hold(StreamLock());
    if (IsEndOfStreamSent()) return true;
    if (EndOf(frame) > stop) m_stopReached = true;
    if (!m_stopReached || StartOf(frame) <= stop) return false;
  }
  DeliverEndOfStream();
  return true;
}

bool CMatroskaVideoPin::HoldFrame(const FrameInfo& frame) {
  if (m_waitForKeyFrame) {
    const CAutoLock hold(StreamLock());
    if (m_waitForKeyFrame && !frame.keyFrame) return true;
    m_waitForKeyFrame = false;
  }
  return Gate().HoldPicture(*this, frame);
}

HRESULT CMatroskaVideoPin::DeliverEndOfStream() {
  const HRESULT result = Gate().EndHolding(*this);
  return FAILED(result) ? result : CMatroskaOutputPin::DeliverEndOfStream();
}

}  // namespace tarvex
