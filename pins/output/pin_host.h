// What an output pin needs from the filter that owns it, and nothing more. The filter implements it
// and outlives the pin's membership in it; a pin that was removed from its filter no longer calls it.
#pragma once

#include <cstdint>
#include <optional>

#include "framework/platform/platform.h"
#include "pins/output/play_positions.h"

namespace tarvex {

class CMatroskaOutputPin;
class SegmentGate;

/// A change of the range that may follow from what it is.
struct RangeChange {
  DWORD mode = AM_SEEKING_NoPositioning;  ///< AM_SEEKING_AbsolutePositioning and the like, for both times
  std::optional<REFERENCE_TIME> start;    ///< what is not given stays
  std::optional<REFERENCE_TIME> stop;
};

class PinHost {
 public:
  /// The range as stored; an open stop is given as it is. Any thread; takes a leaf lock only.
  virtual PlayRange Range() const = 0;

  /// The range of the run, for the new segment of a pin. Worker only.
  virtual PlayRange Segment() const = 0;

  // Of the range, for every frame. Any thread.
  virtual REFERENCE_TIME StartPosition() const { return Range().start; }
  virtual REFERENCE_TIME StopPosition() const { return Range().stop; }

  /// The range as applications see it: an open stop is replaced by the duration for good. Any thread.
  virtual PlayRange Positions() = 0;

  /// Segment duration in 100 ns units, kOpenTime when unknown. Any thread.
  virtual REFERENCE_TIME Duration() const = 0;

  /// Moves playback: interrupts the worker, stores the range, starts again. Application threads and
  /// queue threads.
  virtual HRESULT SetPlayRange(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) = 0;

  /// The same for a range that follows from the present one. A host with several callers makes this one
  /// step, so that no change is lost.
  virtual HRESULT ChangePlayRange(const RangeChange& change);

  /// Stores the rate alone.
  virtual void SetRate(double rate) = 0;

  /// The first pin that asks owns seeking; answers whether `pin` does.
  virtual bool ClaimSeekingOwner(const CMatroskaOutputPin* pin) = 0;
  virtual void ClearSeekingOwner() = 0;

  /// Sets the time format of every output pin.
  virtual void SetTimeFormatOnAllPins(const GUID& format) = 0;

  /// Default frame duration of a track, 100 ns units, 0 when it has none.
  virtual REFERENCE_TIME DefaultFrameDuration(std::uint32_t trackNumber) const = 0;

  /// Where the frames of all pins are held back. Lives as long as the host.
  virtual SegmentGate& Gate() = 0;

  /// The worker calls BeforeWait whenever it may have to wait, so that a queue's thread need not be woken
  /// for each sample.
  virtual bool WakesBeforeWaits() const { return false; }
  /// Wakes the queues of all pins. Worker only.
  virtual void BeforeWait() {}

 protected:
  PinHost() = default;
  PinHost(const PinHost&) = default;
  PinHost& operator=(const PinHost&) = default;
  ~PinHost() = default;
};

}  // namespace tarvex
