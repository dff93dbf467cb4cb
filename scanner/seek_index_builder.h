// Building the seek index of an opened file. Free functions; run on the thread that prepares the index,
// which has the scanner to itself.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "scanner/element_walker.h"
#include "scanner/matroska_info.h"
#include "scanner/seek_point.h"

namespace tarvex {

/// One entry for each cue point of track 1, whatever kind of track that is. Empty without such Cues.
/// `position` is where they should be, `scale` the length of a tick in nanoseconds.
std::vector<SeekPoint> IndexFromCues(CElementWalker& walker, const libmatroska::KaxSegment& segment,
                                     std::uint64_t position, std::uint64_t scale);

/// One entry for each key frame of the first video track (of track 1 when there is none). Reads every
/// Cluster from the walker's position on, but for the frames. Nothing when `eventsPending` answered true.
std::optional<std::vector<SeekPoint>> IndexFromClusters(CElementWalker& walker, const libmatroska::KaxSegment& segment,
                                                        const CMatroskaInfo& info,
                                                        const std::function<bool()>& eventsPending);

}  // namespace tarvex
