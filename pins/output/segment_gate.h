// Holds the frames of all pins back from every start and seek on, until it is known where the new segment starts,
// and then lets them go. Owned by the filter and used by its pins on the worker; flushes and state changes drop
// what is held, on application threads.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "framework/critical_section.h"
#include "pins/output/pending_frames.h"
#include "pins/output/play_positions.h"

namespace tarvex {

/// A start or a seek may lead anywhere, and a decoder needs a key frame first. So a video pin makes all pins hold,
/// and the gate chooses from its pictures where the segment starts. Times in 100 ns units, of the file.
///
/// Pictures are chosen by the pin that holds them; with several video pins the first one that can choose does it for
/// all. Its lock is a leaf and is not held while frames are delivered.
///
/// Waits here: the worker while held frames are released, for room in a pin's ring (see CSampleBuffer).
class SegmentGate {
 public:
  /// What the gate needs of a pin. All calls come on the worker and without the gate's lock.
  class Receiver {
   public:
    /// Delivers the frame with its time relative to the start of the segment; may wait for room. Throws what the
    /// pin's delivery throws.
    virtual HRESULT DeliverHeld(const FrameInfo& frame) = 0;
    /// The same if there is room now; nothing where there is none.
    virtual std::optional<HRESULT> TryDeliverHeld(const FrameInfo& frame) = 0;
    /// All that was held of this pin is delivered: an end of stream behind it may follow.
    virtual void OnHeldDelivered() = 0;
    /// Frames of this pin that were held will not be delivered.
    virtual void OnHeldLost() = 0;

   protected:
    Receiver() = default;
    Receiver(const Receiver&) = default;
    Receiver& operator=(const Receiver&) = default;
    ~Receiver() = default;
  };

  /// `positions` lives as long as the gate.
  explicit SegmentGate(PlayPositions& positions) : m_positions(positions) {}

  /// On: frames of all pins are held from now on. What is held already stays either way. Any thread.
  void SetHolding(bool on) noexcept { m_holding = on; }
  // Without the lock the answer may be late, as it may be for the frame before.
  bool IsHolding() const noexcept { return m_holding; }

  /// Keeps a copy of the frame and answers true; false when nothing is held. Whoever holds the frame with which all
  /// pins together hold too much (limits::kHeldBytes) releases all. Worker only. Throws std::bad_alloc and what
  /// releasing throws.
  bool Hold(Receiver& pin, const FrameInfo& frame);
  /// The same for a frame of a video pin, which may be the one that shows where the segment starts. Then all that is
  /// held goes, and holding is off.
  bool HoldPicture(Receiver& pin, const FrameInfo& frame);
  /// No more pictures come: releases what all pins hold, with the best start that the pictures of `pin` allow. A
  /// failed delivery is returned, and holding stays on. Worker, or an application thread while there is none.
  HRESULT EndHolding(Receiver& pin);

  /// Something of this pin is held. Any thread.
  bool Holds(const Receiver& pin) const;
  /// Drops what is held of the pin, also what is just being released. Any thread.
  void Drop(const Receiver& pin) noexcept;
  /// Forgets all pins, which are about to go. No worker.
  void Clear() noexcept;

 private:
  /// Where the segment starts, and from when on held frames belong to it.
  struct Choice {
    REFERENCE_TIME start;
    REFERENCE_TIME firstFrame;
  };
  struct Lane {
    Receiver* pin;
    bool carriesPictures;
    PendingFrames frames;
  };
  using Lanes = std::vector<Lane>;
  class Release;

  // With the lock.
  Lane& LaneOf(Receiver& pin, bool carriesPictures);
  const Lane* FindLane(const Receiver& pin) const noexcept;
  template <class Change>
  void Counted(PendingFrames& frames, Change&& change);
  std::optional<Choice> ChooseFrom(const PendingFrames& pictures) const;
  Choice LastChoice(const Lane* pictures) const;
  Choice ChoiceAtBound() const;

  // Without it.
  HRESULT FlushPending(const Choice& choice);
  void GoOnFrom(const Choice& choice);

  PlayPositions& m_positions;
  std::atomic<bool> m_holding{false};
  std::atomic<unsigned> m_drops{0};  // so often something was dropped

  mutable CCritSec m_lock{"SegmentGate", LockRank::kLeaf};
  Lanes m_lanes;                 // of pins that hold something, or did
  std::size_t m_bytes = 0;       // of all lanes
  std::uint64_t m_arrivals = 0;  // so many frames were held
};

}  // namespace tarvex
