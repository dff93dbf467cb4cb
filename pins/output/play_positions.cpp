// Reads and changes of the play range, each whole.
#include "pins/output/play_positions.h"

#include <utility>

namespace tarvex {

// With the lock held.
void PlayPositions::Store(const PlayRange& range) {
  m_range = range;
  m_segment = range;
  m_start = range.start;
  m_stop = range.stop;
}

void PlayPositions::Open(REFERENCE_TIME duration, std::map<std::uint32_t, REFERENCE_TIME> frameDurations) {
  const CAutoLock lock(m_lock);
  Store(PlayRange{});
  m_duration = duration > 0 ? duration : kOpenTime;
  m_frameDurations = std::move(frameDurations);
}

void PlayPositions::Close() {
  const CAutoLock lock(m_lock);
  Store(PlayRange{});
  m_duration = kOpenTime;
  m_frameDurations.clear();
}

PlayRange PlayPositions::Range() const {
  const CAutoLock lock(m_lock);
  return m_range;
}

PlayRange PlayPositions::Positions() {
  const CAutoLock lock(m_lock);
  if (m_range.stop == kOpenTime) m_stop = m_range.stop = m_duration;
  return m_range;
}

void PlayPositions::SetRange(const PlayRange& range) {
  const CAutoLock lock(m_lock);
  Store(range);
}

void PlayPositions::SetStart(REFERENCE_TIME start) {
  const CAutoLock lock(m_lock);
  m_start = m_range.start = m_segment.start = start;
}

void PlayPositions::BeginRun() {
  const CAutoLock lock(m_lock);
  m_segment = m_range;
}

PlayRange PlayPositions::Segment() const {
  const CAutoLock lock(m_lock);
  return m_segment;
}

void PlayPositions::SetRate(double rate) {
  const CAutoLock lock(m_lock);
  m_range.rate = rate;
}

REFERENCE_TIME PlayPositions::Duration() const {
  const CAutoLock lock(m_lock);
  return m_duration;
}

REFERENCE_TIME PlayPositions::FrameDuration(std::uint32_t trackNumber) const {
  const CAutoLock lock(m_lock);
  const auto found = m_frameDurations.find(trackNumber);
  return found == m_frameDurations.end() ? 0 : found->second;
}

}  // namespace tarvex
