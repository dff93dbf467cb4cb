// The seek index of the Cues. A free function; runs on the thread that opens the file, or on the worker if the Cues had
// not arrived then. Either has the scanner to itself.
#pragma once

#include <cstdint>
#include <vector>

#include "scanner/elements/element_walker.h"
#include "scanner/index/seek_point.h"

namespace tarvex {

/// One entry for each cue point of track 1, whatever kind of track that is. Empty without such Cues.
/// `position` is where they should be, `scale` the length of a tick in nanoseconds.
std::vector<SeekPoint> IndexFromCues(ElementWalker& walker, const libmatroska::KaxSegment& segment,
                                     std::uint64_t position, std::uint64_t scale);

}  // namespace tarvex
