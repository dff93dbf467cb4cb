// Finding a time in the seek index. A pure function; any thread.
#pragma once

#include <cstdint>
#include <span>

#include "scanner/seek_point.h"

namespace tarvex {

/// The last entry whose time is not after `time`; 0 when there is none. `duration` is the file's, 0 when
/// unknown, and only shortens the walk, except that a time so far behind it that the estimate leaves the
/// index gives 0.
std::int32_t FindIndexEntry(std::span<const SeekPoint> index, std::uint64_t time, std::uint64_t duration);

}  // namespace tarvex
