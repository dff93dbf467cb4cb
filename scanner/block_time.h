// Time arithmetic between the file's units and ours. Pure functions; any thread.
#pragma once

#include <cstdint>

namespace tarvex {

inline constexpr std::uint64_t kNanosecondsPerUnit = 100;  // our unit is 100 ns

/// From signed nanoseconds, cut toward zero. A time before zero comes out as its two's complement.
constexpr std::uint64_t UnitsFromSignedNanoseconds(std::uint64_t nanoseconds) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(nanoseconds) /
                                    static_cast<std::int64_t>(kNanosecondsPerUnit));
}

/// From a count of ticks of `scale` nanoseconds. What does not fit in 64 bits is cut off.
constexpr std::uint64_t UnitsFromTicks(std::uint64_t ticks, std::uint64_t scale) {
  return ticks * scale / kNanosecondsPerUnit;
}

/// From the Segment's duration in ticks: 0 when that is not a number, infinite or negative, the largest
/// value when it is larger than that.
std::uint64_t SegmentDuration(double ticks, std::uint64_t scale);

}  // namespace tarvex
