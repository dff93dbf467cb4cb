// The seek index of a file without Cues. A free function; runs on the worker, which has the scanner to itself.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "scanner/elements/element_walker.h"
#include "scanner/file/matroska_info.h"
#include "scanner/index/seek_point.h"

namespace tarvex {

/// One entry for each key frame of the first video track (of track 1 when there is none). Reads every
/// Cluster from the walker's position on, but for the frames. Nothing when `eventsPending` answered true.
std::optional<std::vector<SeekPoint>> IndexFromClusters(ElementWalker& walker, const libmatroska::KaxSegment& segment,
                                                        const CMatroskaInfo& info,
                                                        const std::function<bool()>& eventsPending);

}  // namespace tarvex
