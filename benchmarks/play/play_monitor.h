// When the first sample and the last end of a playback came. Owned by the playback; the sinks report on
// their streaming threads, the main thread waits.
#pragma once

#include <chrono>
#include <cstddef>

#include "benchmarks/play/counting_source.h"
#include "framework/event.h"

namespace tarvex::bench {

using Clock = std::chrono::steady_clock;

class PlayMonitor {
 public:
  struct First {
    Clock::time_point time;
    ReadCount reads;  ///< of the source when it came
  };

  /// Before the start: `source` is where reads are counted, or null; it must outlive this. `sinks` ends
  /// make up the end.
  void Expect(const CountingSource* source, std::size_t sinks);

  // For the sinks. The first report since the start or the last OnFlush counts. Where all streams end
  // without a sample, as behind the last frame, the end stands for it.
  void OnFirstSample();
  void OnEnd();
  /// What came before it does not count any more.
  void OnFlush();

  /// False when it does not come in time.
  bool WaitForFirst(DWORD milliseconds) { return m_begun.Wait(milliseconds); }
  bool WaitForEnd(DWORD milliseconds) { return m_ended.Wait(milliseconds); }
  First FirstSample();
  Clock::time_point EndTime();

 private:
  void TakeFirst(Clock::time_point now);

  const CountingSource* m_source = nullptr;
  CCritSec m_lock{"PlayMonitor", LockRank::kVisited};
  First m_first;                   // under m_lock, as the following
  Clock::time_point m_endTime;     //
  std::size_t m_expectedEnds = 0;  //
  std::size_t m_ends = 0;          //
  bool m_hasFirst = false;         //
  Event m_begun{Event::Mode::kManual};
  Event m_ended{Event::Mode::kManual};
};

}  // namespace tarvex::bench
