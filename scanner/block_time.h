// Time arithmetic between the file's units and ours. Pure functions; any thread.
#pragma once

#include <cstdint>

namespace tarvex {

inline constexpr std::uint64_t kNanosecondsPerUnit = 100;  // our unit is 100 ns

/// The time of a block `relative` ticks of `scale` nanoseconds after its Cluster's time, which is given in
/// nanoseconds: cut toward zero, and in two's complement when it is before zero. What does not fit in 64
/// bits is cut off.
constexpr std::uint64_t BlockUnits(std::uint64_t clusterNanoseconds, std::int16_t relative, std::uint64_t scale) {
  if (relative >= 0) return (clusterNanoseconds + static_cast<std::uint64_t>(relative) * scale) / kNanosecondsPerUnit;
  const std::uint64_t before = static_cast<std::uint64_t>(-relative) * scale;
  if (before <= clusterNanoseconds) return (clusterNanoseconds - before) / kNanosecondsPerUnit;
  return std::uint64_t{0} - (before - clusterNanoseconds) / kNanosecondsPerUnit;
}

/// From a count of ticks of `scale` nanoseconds. What does not fit in 64 bits is cut off.
constexpr std::uint64_t UnitsFromTicks(std::uint64_t ticks, std::uint64_t scale) {
  return ticks * scale / kNanosecondsPerUnit;
}

/// From the Segment's duration in ticks: 0 when that is not a number, infinite or negative, the largest
/// value when it is larger than that.
std::uint64_t SegmentDuration(double ticks, std::uint64_t scale);

}  // namespace tarvex
