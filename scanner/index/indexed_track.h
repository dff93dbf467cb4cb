// Which track a seek index is of. Pure; any thread.
#pragma once

#include <cstdint>

#include "scanner/file/matroska_info.h"

namespace tarvex {

/// Whose cue points count, whatever kind of track it is.
inline constexpr std::uint64_t kIndexedTrack = 1;

/// The number of the track whose key frames count where there are no Cues: the first video track, or that one.
inline std::uint64_t TrackOfClusterIndex(const CMatroskaInfo& info) {
  const std::int64_t video = info.FirstVideoTrackNumber();
  return video < 0 ? kIndexedTrack : static_cast<std::uint64_t>(video);
}

}  // namespace tarvex
