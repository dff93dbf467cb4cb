// What playback positions are made of: the played range, who may move it, the file's duration and the frame durations
// of its tracks. Owned by the filter; used by pins on application threads, queue threads and the worker.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>

#include "framework/critical_section.h"
#include "framework/media_time.h"
#include "framework/platform/platform.h"

namespace tarvex {

class CBasePin;
class PassControl;

/// The part of the file that is played. Times in 100 ns units.
struct PlayRange {
  REFERENCE_TIME start = 0;
  REFERENCE_TIME stop = kOpenTime;  ///< open: play to the end
  double rate = 1.0;
};

/// A change of the range that may follow from what it is. Times in 100 ns units.
struct RangeChange {
  DWORD mode = AM_SEEKING_NoPositioning;  ///< AM_SEEKING_AbsolutePositioning and the like, for both times
  std::optional<REFERENCE_TIME> start;    ///< what is not given stays
  std::optional<REFERENCE_TIME> stop;
};

/// Times in 100 ns units. Any thread, unless said otherwise. There are two locks, since the worker is waited for in
/// the middle of a seek and reads the range with every frame: the position lock is held for the whole of a change,
/// a leaf for each access.
class PlayPositions {
 public:
  /// A newly opened file is played whole. A duration that is not positive counts as unknown.
  void Open(REFERENCE_TIME duration, std::map<std::uint32_t, REFERENCE_TIME> frameDurations);
  void Close();

  /// Held around changes of the range, flushes, and changes of the filter's list of pins. Behind the filter lock, and
  /// before the worker's control lock.
  CCritSec& PositionLock() noexcept { return m_positionLock; }

  /// Moves playback as a whole: interrupts the pass, stores the range, resumes. A stop that is 0 or before the start
  /// becomes the duration. Application and queue threads, and the worker. Throws MessageError for a mode that is none,
  /// with nothing changed.
  void Move(const RangeChange& change, PassControl& pass);
  /// The first pin that asks owns seeking; whether it is this one. Takes no lock.
  bool ClaimSeekingOwner(const CBasePin& pin) noexcept;
  /// Takes back the claim of this pin, and of no other.
  void GiveUpSeeking(const CBasePin& pin) noexcept;
  void ClearSeekingOwner() noexcept { m_seekingOwner = nullptr; }

  PlayRange Range() const;
  /// The range with an open stop replaced by the duration, for good.
  PlayRange Positions();
  // Each by itself, without waiting.
  REFERENCE_TIME Start() const noexcept { return m_start; }
  REFERENCE_TIME Stop() const noexcept { return m_stop; }
  /// The origin of the new segment, which is where the range starts from then on.
  void SetStart(REFERENCE_TIME start);
  void SetRate(double rate);

  /// A run begins with the range as it is now. Gives the time from which on the file is to be read, which is the start
  /// that was last asked for; not negative. Worker only.
  REFERENCE_TIME BeginRun();
  /// The range of the run: one value for all its pins, whoever asks for the positions or sets the rate between their
  /// first samples. A seek from the worker's own thread, which starts no run, changes it as well.
  PlayRange Segment() const;

  /// In which all pins give and take times: TIME_FORMAT_MEDIA_TIME until it is set.
  GUID TimeFormat() const;
  void SetTimeFormat(const GUID& format);

  /// kOpenTime when unknown.
  REFERENCE_TIME Duration() const;
  /// 0 for a track without one.
  REFERENCE_TIME FrameDuration(std::uint32_t trackNumber) const;

 private:
  PlayRange RangeAfter(const RangeChange& change);
  void MoveTo(REFERENCE_TIME start, REFERENCE_TIME stop);
  void Store(const PlayRange& range);

  CCritSec m_positionLock{"position", LockRank::kPosition};
  std::atomic<const CBasePin*> m_seekingOwner{nullptr};  // compared only

  mutable CCritSec m_lock{"PlayPositions", LockRank::kLeaf};
  PlayRange m_range;
  PlayRange m_segment;
  REFERENCE_TIME m_readFrom = 0;
  std::atomic<REFERENCE_TIME> m_start{0};  // as in the range
  std::atomic<REFERENCE_TIME> m_stop{kOpenTime};
  GUID m_timeFormat = TIME_FORMAT_MEDIA_TIME;
  REFERENCE_TIME m_duration = kOpenTime;
  std::map<std::uint32_t, REFERENCE_TIME> m_frameDurations;
};

}  // namespace tarvex
