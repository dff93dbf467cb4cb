#include "host/graph/stream_counter.h"

#include <algorithm>

namespace tarvex::host {

// Only the streaming thread writes numbers, so that reading and writing need not be one step.

void StreamCounter::OnSegment(REFERENCE_TIME start, REFERENCE_TIME /*stop*/, double /*rate*/) {
  m_earlierSpan = Span();
  m_first = m_position = start;
  m_segmentStart = start;
  m_timed = false;
  m_ended = false;
}

void StreamCounter::OnSample(const SampleView& sample) {
  ++m_samples;
  m_bytes += sample.data.size();
  if (sample.start) {
    const std::int64_t start = m_segmentStart + *sample.start;
    const std::int64_t end = m_segmentStart + std::max(*sample.start, sample.stop.value_or(*sample.start));
    m_first = m_timed ? std::min<std::int64_t>(m_first, start) : start;
    m_position = m_timed ? std::max<std::int64_t>(m_position, end) : end;
    m_timed = true;
  }
  m_hasSamples = true;
}

void StreamCounter::OnRestart() noexcept {
  m_hasSamples = false;
  m_ended = false;
}

}  // namespace tarvex::host
