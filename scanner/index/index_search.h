// Finding a time in the seek index. A pure function; any thread.
#pragma once

#include <cstdint>
#include <span>

#include "scanner/index/seek_point.h"

namespace tarvex {

/// No entry is earlier than the one before it, as in every file that is not damaged.
bool IsIndexSorted(std::span<const SeekPoint> index);

/// The last entry whose time is not after `time`; 0 when there is none. `duration` is the file's, 0 when
/// unknown. From there a walk through the index begins, which an index that `isSorted` spares; and a time so
/// far behind it that the estimate leaves the index gives 0.
std::int32_t FindIndexEntry(std::span<const SeekPoint> index, std::uint64_t time, std::uint64_t duration,
                            bool isSorted = false);

}  // namespace tarvex
