// Finding a time in the seek index. A pure function; any thread.
#pragma once

#include <cstdint>
#include <span>

#include "scanner/index/seek_point.h"

namespace tarvex {

/// No entry is earlier than the one before it, as in every file that is not damaged.
bool IsIndexSorted(std::span<const SeekPoint> index);

/// The number of the last entry whose time is not after `time`; 0 when there is none. `duration` is the file's, 0 when
/// unknown: it gives an estimate from which a walk through the index begins. An index that `isSorted` needs no walk. A
/// time so far behind the duration that the estimate leaves the index gives 0.
std::int32_t FindIndexEntry(std::span<const SeekPoint> index, std::uint64_t time, std::uint64_t duration,
                            bool isSorted = false);

}  // namespace tarvex
