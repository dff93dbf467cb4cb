// What playback positions are made of: the played range, the file's duration and the frame durations of
// its tracks. Owned by the filter; read by pins on application threads, queue threads and the worker.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>

#include "framework/critical_section.h"
#include "framework/media_time.h"

namespace tarvex {

/// The part of the file that is played. Times in 100 ns units.
struct PlayRange {
  REFERENCE_TIME start = 0;
  REFERENCE_TIME stop = kOpenTime;  ///< open: play to the end
  double rate = 1.0;
};

/// Times in 100 ns units. Its lock is a leaf and not the filter's position lock, because that one is held
/// while the worker is being waited for, and the worker reads the range with every frame.
class PlayPositions {
 public:
  /// A newly opened file is played whole. A duration that is not positive counts as unknown.
  void Open(REFERENCE_TIME duration, std::map<std::uint32_t, REFERENCE_TIME> frameDurations);
  void Close();

  PlayRange Range() const;
  /// The range with an open stop replaced by the duration, for good.
  PlayRange Positions();
  // Each by itself, without waiting.
  REFERENCE_TIME Start() const noexcept { return m_start; }
  REFERENCE_TIME Stop() const noexcept { return m_stop; }
  void SetRange(const PlayRange& range);
  /// The origin of the new segment, which is where the range starts from then on.
  void SetStart(REFERENCE_TIME start);
  void SetRate(double rate);

  /// A run begins with the range as it is now.
  void BeginRun();
  /// The range of the run: one value for all its pins, whoever asks for the positions or sets the rate between their
  /// first samples. A seek from the worker's own thread, which starts no run, changes it as well.
  PlayRange Segment() const;

  /// kOpenTime when unknown.
  REFERENCE_TIME Duration() const;
  /// 0 for a track without one.
  REFERENCE_TIME FrameDuration(std::uint32_t trackNumber) const;

 private:
  void Store(const PlayRange& range);

  mutable CCritSec m_lock{"PlayPositions", LockRank::kLeaf};
  PlayRange m_range;
  PlayRange m_segment;
  std::atomic<REFERENCE_TIME> m_start{0};  // as in the range
  std::atomic<REFERENCE_TIME> m_stop{kOpenTime};
  REFERENCE_TIME m_duration = kOpenTime;
  std::map<std::uint32_t, REFERENCE_TIME> m_frameDurations;
};

}  // namespace tarvex
