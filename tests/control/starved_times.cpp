// See starved_times.h.
#include "tests/control/starved_times.h"

#include <algorithm>
#include <utility>

#include "tests/support/test_system.h"

namespace tarvex::test {

// A thread's wait is known when it is over, so it lies right before now, give or take an interval.
StarvedTimes::Clock::duration StarvedTimes::LongestWait() {
  auto waits = ProcessorWaits();
  std::uint64_t longest = 0;
  for (const auto& [thread, wait] : waits) {
    const auto former = m_waits.find(thread);
    const std::uint64_t known = former != m_waits.end() ? std::min(former->second, wait) : 0;
    longest = std::max(longest, wait - known);
  }
  m_waits = std::move(waits);
  return std::chrono::duration_cast<Clock::duration>(std::chrono::nanoseconds(longest));
}

void StarvedTimes::Note(Clock::time_point oldest) {
  const auto now = Clock::now();
  const auto late = now - std::exchange(m_noted, now) - kInterval;
  Span span{now - std::max(LongestWait(), std::max(late, Clock::duration::zero())), now};
  while (!m_spans.empty() && m_spans.back().to >= span.from) {
    span.from = std::min(span.from, m_spans.back().from);
    m_spans.pop_back();
  }
  if (span.from < span.to) m_spans.push_back(span);
  while (!m_spans.empty() && m_spans.front().to < oldest) m_spans.pop_front();
}

std::chrono::milliseconds StarvedTimes::Since(Clock::time_point start) const {
  Clock::duration sum{};
  for (const Span& span : m_spans) sum += std::max(span.to - std::max(span.from, start), Clock::duration::zero());
  return std::chrono::duration_cast<std::chrono::milliseconds>(sum);
}

}  // namespace tarvex::test
