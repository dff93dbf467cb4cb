// Turning a Tracks element into track tables. A free function; runs while a file is opened.
#pragma once

#include <matroska/KaxTracks.h>

#include <functional>

#include "scanner/elements/element_walker.h"
#include "scanner/file/matroska_info.h"

namespace tarvex {

/// Appends one table for each track entry of `tracks`, at whose data `walker` stands, and calls `onTrack` after
/// each, up to as many tracks as are allowed. What that throws ends the reading.
void ReadTracks(ElementWalker& walker, libmatroska::KaxTracks& tracks, CMatroskaInfo& info,
                const std::function<void()>& onTrack);

}  // namespace tarvex
