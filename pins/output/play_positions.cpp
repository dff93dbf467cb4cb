// Reads and changes of the play range, each whole.
#include "pins/output/play_positions.h"

#include <algorithm>
#include <utility>

#include "framework/output_queue.h"
#include "pins/output/pass_control.h"
#include "pins/output/seek_arithmetic.h"

namespace tarvex {

void PlayPositions::Move(const RangeChange& change, PassControl& pass) {
  // A queue's thread may be here, and a seek in progress flush its queue.
  const COutputQueue::CallFromDownstream call;
  const CAutoLock lock(m_positionLock);
  const PlayRange range = RangeAfter(change);
  const PassInterruption interruption(pass);
  MoveTo(range.start, range.stop);
}

PlayRange PlayPositions::RangeAfter(const RangeChange& change) {
  PlayRange range = Positions();
  if (change.mode != AM_SEEKING_NoPositioning) {
    const bool absolute = change.mode == AM_SEEKING_AbsolutePositioning;
    // What the caller does not give stays: itself when replaced, nothing when added.
    applySeekPosition(range.start, change.start.value_or(absolute ? range.start : 0), range.stop,
                      change.stop.value_or(absolute ? range.stop : 0), change.mode);
  }
  if (range.stop == 0 || range.stop < range.start) range.stop = Duration();
  return range;
}

// A queue's thread that seeks for a pin that is not the owner must not wait for a seek in progress, which waits for
// that very thread to come back from downstream.
bool PlayPositions::ClaimSeekingOwner(const CBasePin& pin) noexcept {
  const CBasePin* owner = nullptr;
  return m_seekingOwner.compare_exchange_strong(owner, &pin) || owner == &pin;
}

void PlayPositions::GiveUpSeeking(const CBasePin& pin) noexcept {
  const CBasePin* owner = &pin;
  m_seekingOwner.compare_exchange_strong(owner, nullptr);
}

// With the lock held.
void PlayPositions::Store(const PlayRange& range) {
  m_range = range;
  m_segment = range;
  m_readFrom = std::max<REFERENCE_TIME>(range.start, 0);
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

// The rate stays, whoever may be setting it.
void PlayPositions::MoveTo(REFERENCE_TIME start, REFERENCE_TIME stop) {
  const CAutoLock lock(m_lock);
  Store({.start = start, .stop = stop, .rate = m_range.rate});
}

void PlayPositions::SetStart(REFERENCE_TIME start) {
  const CAutoLock lock(m_lock);
  m_start = m_range.start = m_segment.start = start;
}

REFERENCE_TIME PlayPositions::BeginRun() {
  const CAutoLock lock(m_lock);
  m_segment = m_range;
  return m_readFrom;
}

PlayRange PlayPositions::Segment() const {
  const CAutoLock lock(m_lock);
  return m_segment;
}

void PlayPositions::SetRate(double rate) {
  const CAutoLock lock(m_lock);
  m_range.rate = rate;
}

GUID PlayPositions::TimeFormat() const {
  const CAutoLock lock(m_lock);
  return m_timeFormat;
}

void PlayPositions::SetTimeFormat(const GUID& format) {
  const CAutoLock lock(m_lock);
  m_timeFormat = format;
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
