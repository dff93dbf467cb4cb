// The frames of one pin that are held back until the start of a segment is known. A value of the segment gate,
// which guards it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <vector>

#include "framework/platform/platform.h"
#include "scanner/frames/frame_info.h"

namespace tarvex {

/// Frames in order of arrival, with copies of their bytes. Times in 100 ns units, signed.
class PendingFrames {
 public:
  PendingFrames() = default;
  // Frames point to their bytes, which a copy would not have.
  PendingFrames(PendingFrames&&) = default;
  PendingFrames& operator=(PendingFrames&&) = default;
  PendingFrames(const PendingFrames&) = delete;
  PendingFrames& operator=(const PendingFrames&) = delete;
  ~PendingFrames() = default;

  /// Copies the frame with its bytes. `arrival` tells it from frames of other pins; it grows. Throws std::bad_alloc.
  void Add(const FrameInfo& frame, std::uint64_t arrival);

  bool IsEmpty() const noexcept { return m_frames.empty(); }
  std::size_t Count() const noexcept { return m_frames.size(); }
  /// What the frames take, roughly.
  std::size_t Bytes() const noexcept { return m_bytes; }
  /// In order of arrival; `index` is below Count. Its bytes live until the frame is dropped.
  const FrameInfo& At(std::size_t index) const { return m_frames[index].frame; }
  std::uint64_t ArrivalOf(std::size_t index) const { return m_frames[index].arrival; }

  /// Two or more frames are key frames.
  bool HasTwoKeyFrames() const noexcept { return m_keyFrames.size() >= 2; }
  /// The smallest start time, 0 when empty.
  REFERENCE_TIME EarliestStart() const noexcept;
  /// The greatest start time, 0 when empty.
  REFERENCE_TIME LatestStart() const noexcept;
  /// Start time of the first frame, 0 when empty.
  REFERENCE_TIME FirstStart() const noexcept;

  /// Chooses a start for a segment that is wanted from `t`: the greatest start time that is not greater,
  /// or the smallest when all are greater. True when found; `start` is written only then. As long as no
  /// start time is greater than `t`, a later frame might be nearer and nothing is found; when no more
  /// frames come (`final`), a latest start of exactly `t` is found, with `start` left as it is.
  bool PickStart(REFERENCE_TIME t, bool final, REFERENCE_TIME& start) const;

  /// Drops all before the last key frame that starts no later than `t`; nothing when there is none.
  void TrimToKeyFrameBefore(REFERENCE_TIME t);
  /// Drops frames from the front as long as they start before `t`.
  void DropBefore(REFERENCE_TIME t);
  void Clear() noexcept;

 private:
  // Frames are numbered as they come; the first in the list has m_firstNumber.
  using Number = std::uint64_t;
  struct Held {
    FrameInfo frame;
    std::uint64_t arrival;
    std::vector<std::uint8_t> bytes;
  };

  static std::size_t BytesOf(const Held& held) noexcept { return sizeof(Held) + held.bytes.size(); }
  const FrameInfo& Frame(Number number) const {
    return m_frames[static_cast<std::size_t>(number - m_firstNumber)].frame;
  }
  void DropFirst();

  std::deque<Held> m_frames;
  std::map<REFERENCE_TIME, Number> m_byStart;  // of several with one start, the last
  std::deque<Number> m_keyFrames;
  Number m_firstNumber = 0;
  std::size_t m_bytes = 0;
};

}  // namespace tarvex
