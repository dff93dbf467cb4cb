// The play range and what else the output pins ask of the filter.
#include <algorithm>

#include "filter/matroska_splitter.h"

namespace tarvex {

HRESULT CMatroskaSplitter::SetPlayRange(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  const CAutoLock lock(m_positionLock);
  if (stop == 0 || stop < start) stop = m_timeline.Duration();
  const bool interrupted = Interrupt();
  m_timeline.SetRange({.start = start, .stop = stop, .rate = rate});
  m_scanner.SetStartTime(static_cast<std::uint64_t>(std::max<REFERENCE_TIME>(start, 0)));
  if (interrupted) ResumeWorker();
  return S_OK;
}

bool CMatroskaSplitter::ClaimSeekingOwner(const CMatroskaOutputPin* pin) {
  const CAutoLock lock(m_positionLock);
  if (m_seekingOwner == nullptr) m_seekingOwner = pin;
  return m_seekingOwner == pin;
}

void CMatroskaSplitter::ClearSeekingOwner() {
  const CAutoLock lock(m_positionLock);
  m_seekingOwner = nullptr;
}

void CMatroskaSplitter::SetTimeFormatOnAllPins(const GUID& format) {
  const CAutoLock lock(m_positionLock);
  for (const auto& pin : m_outputPins) pin->StoreTimeFormat(format);
}

REFERENCE_TIME CMatroskaSplitter::DefaultFrameDuration(std::uint32_t trackNumber) const {
  return m_timeline.FrameDuration(trackNumber);
}

void CMatroskaSplitter::SetHoldingOnAllPins(bool on) {
  for (const auto& pin : m_outputPins) pin->SetHolding(on);
}

HRESULT CMatroskaSplitter::ReleaseHeldFrames(REFERENCE_TIME first) {
  for (const auto& pin : m_outputPins) {
    if (!pin->IsConnected()) continue;
    pin->DropHeldBefore(first);
    const HRESULT result = pin->FlushPending();
    if (SUCCEEDED(result)) continue;
    // What comes next goes past the frames that are still held, and they must not follow later.
    for (const auto& each : m_outputPins) each->DropHeld();
    return result;
  }
  return S_OK;
}

}  // namespace tarvex
