// What reaches a sink from a film, with where it comes from and the segment it belongs to. Owned by a test; written
// by the sink's thread.
#pragma once

#include <mutex>
#include <vector>

#include "framework/event.h"
#include "tests/support/film.h"
#include "tests/support/sink_filter.h"

namespace tarvex::test {

struct Arrival {
  FrameOrigin origin;
  REFERENCE_TIME start = 0;  ///< relative to the segment
  REFERENCE_TIME stop = 0;
  bool preroll = false;
  bool discontinuity = false;
};

class Arrivals {
 public:
  /// From now on, for as long as the sink gets samples.
  void Watch(SinkFilter& sink) {
    sink.OnSample([this](IMediaSample* sample) { Note(sample); });
  }
  /// What comes next counts from its first discontinuity on: samples of the former segment may still be on their way.
  void Forget() {
    const std::lock_guard hold(m_lock);
    m_arrived.clear();
    m_shown.Clear();
  }
  /// Until a sample came that is to be shown.
  bool WaitUntilShown(DWORD milliseconds) { return m_shown.Wait(milliseconds); }
  std::vector<Arrival> All() {
    const std::lock_guard hold(m_lock);
    return m_arrived;
  }

 private:
  void Note(IMediaSample* sample) {
    Arrival arrival{.origin = OriginOf(sample), .preroll = sample->IsPreroll() == S_OK};
    arrival.discontinuity = sample->IsDiscontinuity() == S_OK;
    sample->GetTime(&arrival.start, &arrival.stop);
    const std::lock_guard hold(m_lock);
    if (m_arrived.empty() && !arrival.discontinuity) return;
    m_arrived.push_back(arrival);
    if (arrival.stop > 0) m_shown.Set();
  }

  std::mutex m_lock;
  std::vector<Arrival> m_arrived;
  Event m_shown{Event::Mode::kManual};
};

}  // namespace tarvex::test
