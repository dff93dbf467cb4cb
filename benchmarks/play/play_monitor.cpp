// See play_monitor.h.
#include "benchmarks/play/play_monitor.h"

namespace tarvex::bench {

void PlayMonitor::Expect(const CountingSource* source, std::size_t sinks) {
  const CAutoLock lock(m_lock);
  m_source = source;
  m_expectedEnds = sinks;
}

void PlayMonitor::OnFirstSample() {
  const Clock::time_point now = Clock::now();
  const CAutoLock lock(m_lock);
  TakeFirst(now);
}

void PlayMonitor::OnEnd() {
  const Clock::time_point now = Clock::now();
  const CAutoLock lock(m_lock);
  if (++m_ends < m_expectedEnds) return;
  TakeFirst(now);
  m_endTime = now;
  m_ended.Set();
}

void PlayMonitor::TakeFirst(Clock::time_point now) {
  if (m_hasFirst) return;
  m_hasFirst = true;
  m_first = {now, m_source != nullptr ? m_source->Reads() : ReadCount{}};
  m_begun.Set();
}

void PlayMonitor::OnFlush() {
  const CAutoLock lock(m_lock);
  m_hasFirst = false;
  m_ends = 0;
  m_begun.Clear();
  m_ended.Clear();
}

PlayMonitor::First PlayMonitor::FirstSample() {
  const CAutoLock lock(m_lock);
  return m_first;
}

Clock::time_point PlayMonitor::EndTime() {
  const CAutoLock lock(m_lock);
  return m_endTime;
}

}  // namespace tarvex::bench
