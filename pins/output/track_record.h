// The stream record of one output pin: which track it carries, and how. Owned by the pin; any thread. The record
// changes while the pin is unconnected.
#pragma once

#include <atomic>
#include <cstdint>

#include "framework/critical_section.h"
#include "pins/formats/track_pin_info.h"

namespace tarvex {

class TrackRecord {
 public:
  /// Throws std::bad_alloc, and is unchanged then.
  void Set(const TrackPinInfo& track);
  /// The form of an H.264 stream; nothing for others.
  void SetH264Form(bool byteStream) noexcept;

  /// Copies. Throw std::bad_alloc.
  TrackPinInfo Copy() const;
  CMediaType MediaType() const;
  bool HasMediaType(const CMediaType& type) const;

  // From the record, without a copy: for every frame. 0 before the first.
  std::uint32_t Number() const noexcept { return m_number; }
  std::uint32_t Type() const noexcept { return m_type; }
  bool IsVideo() const noexcept { return m_type == kTrackTypeVideo; }

 private:
  mutable CCritSec m_lock{"TrackRecord", LockRank::kLeaf};
  TrackPinInfo m_track;
  std::atomic<std::uint32_t> m_number{0};  // as in the record
  std::atomic<std::uint32_t> m_type{0};
};

}  // namespace tarvex
