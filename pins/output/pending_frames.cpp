// Held frames and the choice of a segment's start among them.
#include "pins/output/pending_frames.h"

#include <iterator>
#include <utility>

#include "pins/output/frame_times.h"

namespace tarvex {

void PendingFrames::Add(const FrameInfo& frame, std::uint64_t arrival) {
  Held held{.frame = frame, .arrival = arrival, .bytes = {}};
  if (frame.size != 0) held.bytes.assign(frame.data, frame.data + frame.size);
  held.frame.data = held.bytes.data();
  const Number number = m_firstNumber + m_frames.size();
  m_frames.push_back(std::move(held));
  try {
    if (frame.keyFrame) m_keyFrames.push_back(number);
    m_byStart[StartOf(frame)] = number;
  } catch (...) {
    if (!m_keyFrames.empty() && m_keyFrames.back() == number) m_keyFrames.pop_back();
    m_frames.pop_back();
    throw;
  }
  m_bytes += BytesOf(m_frames.back());
}

REFERENCE_TIME PendingFrames::EarliestStart() const noexcept {
  return m_byStart.empty() ? 0 : m_byStart.begin()->first;
}

REFERENCE_TIME PendingFrames::LatestStart() const noexcept { return m_byStart.empty() ? 0 : m_byStart.rbegin()->first; }

REFERENCE_TIME PendingFrames::FirstStart() const noexcept {
  return m_frames.empty() ? 0 : StartOf(m_frames.front().frame);
}

bool PendingFrames::PickStart(REFERENCE_TIME t, bool final, REFERENCE_TIME& start) const {
  if (m_byStart.empty()) return false;
  const auto later = m_byStart.upper_bound(t);
  if (later == m_byStart.end()) return final && LatestStart() == t;
  start = later == m_byStart.begin() ? later->first : std::prev(later)->first;
  return true;
}

void PendingFrames::TrimToKeyFrameBefore(REFERENCE_TIME t) {
  for (auto key = m_keyFrames.rbegin(); key != m_keyFrames.rend(); ++key) {
    const Number number = *key;
    if (StartOf(Frame(number)) > t) continue;
    while (m_firstNumber < number) DropFirst();
    return;
  }
}

void PendingFrames::DropBefore(REFERENCE_TIME t) {
  while (!m_frames.empty() && FirstStart() < t) DropFirst();
}

void PendingFrames::DropFirst() {
  const auto entry = m_byStart.find(FirstStart());
  if (entry->second == m_firstNumber) m_byStart.erase(entry);
  if (!m_keyFrames.empty() && m_keyFrames.front() == m_firstNumber) m_keyFrames.pop_front();
  m_bytes -= BytesOf(m_frames.front());
  m_frames.pop_front();
  ++m_firstNumber;
}

void PendingFrames::Clear() noexcept {
  m_frames.clear();
  m_byStart.clear();
  m_keyFrames.clear();
  m_bytes = 0;
}

}  // namespace tarvex
