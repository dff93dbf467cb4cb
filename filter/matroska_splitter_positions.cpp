// The play range and what else the output pins ask of the filter.
#include <algorithm>

#include "filter/matroska_splitter.h"

namespace tarvex {

HRESULT CMatroskaSplitter::SetPlayRange(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  // A queue's thread may be here, and a seek in progress flush its queue.
  const COutputQueue::CallFromDownstream call;
  const CAutoLock lock(m_positionLock);
  if (stop == 0 || stop < start) stop = m_positions.Duration();
  const bool interrupted = Interrupt();
  m_positions.SetRange({.start = start, .stop = stop, .rate = rate});
  m_scanner.SetStartTime(static_cast<std::uint64_t>(std::max<REFERENCE_TIME>(start, 0)));
  if (interrupted) ResumeWorker();
  return S_OK;
}

HRESULT CMatroskaSplitter::ChangePlayRange(const RangeChange& change) {
  const COutputQueue::CallFromDownstream call;
  const CAutoLock lock(m_positionLock);
  return PinHost::ChangePlayRange(change);
}

// Not in the middle of a change, which stores the rate that it found.
void CMatroskaSplitter::SetRate(double rate) {
  const COutputQueue::CallFromDownstream call;
  const CAutoLock lock(m_positionLock);
  m_positions.SetRate(rate);
}

// Without a lock: a queue's thread that seeks for a pin that is not the owner must not wait for a seek in
// progress, which waits for that very thread to come back from downstream.
bool CMatroskaSplitter::ClaimSeekingOwner(const CMatroskaOutputPin* pin) {
  const CMatroskaOutputPin* owner = nullptr;
  return m_seekingOwner.compare_exchange_strong(owner, pin) || owner == pin;
}

void CMatroskaSplitter::ClearSeekingOwner() { m_seekingOwner = nullptr; }

void CMatroskaSplitter::SetTimeFormatOnAllPins(const GUID& format) {
  const COutputQueue::CallFromDownstream call;
  const CAutoLock lock(m_positionLock);
  for (const auto& pin : m_outputPins) pin->StoreTimeFormat(format);
}

REFERENCE_TIME CMatroskaSplitter::DefaultFrameDuration(std::uint32_t trackNumber) const {
  return m_positions.FrameDuration(trackNumber);
}

}  // namespace tarvex
