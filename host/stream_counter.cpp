#include "host/stream_counter.h"

#include <algorithm>

namespace tarvex::host {

void CStreamCounter::OnSegment(REFERENCE_TIME start, REFERENCE_TIME /*stop*/, double /*rate*/) {
  m_segmentStart = start;
}

// Only the streaming thread writes, so that reading and writing need not be one step.
void CStreamCounter::OnSample(const SampleView& sample) {
  ++m_samples;
  m_bytes += sample.data.size();
  if (!sample.start) return;
  const std::int64_t start = m_segmentStart + *sample.start;
  const std::int64_t end = m_segmentStart + std::max(*sample.start, sample.stop.value_or(*sample.start));
  m_first = m_timed ? std::min<std::int64_t>(m_first, start) : start;
  m_position = m_timed ? std::max<std::int64_t>(m_position, end) : end;
  m_timed = true;
}

std::int64_t CStreamCounter::Span() const noexcept { return m_position - m_first; }

}  // namespace tarvex::host
