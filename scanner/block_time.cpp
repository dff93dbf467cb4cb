#include "scanner/block_time.h"

#include <cmath>
#include <limits>

namespace tarvex {

std::uint64_t SegmentDuration(double ticks, std::uint64_t scale) {
  if (!std::isfinite(ticks) || ticks < 0) return 0;
  constexpr double kTooLarge = 18446744073709551616.0;  // 2^64
  const double units = ticks * static_cast<double>(scale) / static_cast<double>(kNanosecondsPerUnit);
  return units < kTooLarge ? static_cast<std::uint64_t>(units) : std::numeric_limits<std::uint64_t>::max();
}

}  // namespace tarvex
