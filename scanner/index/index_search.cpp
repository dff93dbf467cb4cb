#include "scanner/index/index_search.h"

#include <algorithm>

namespace tarvex {

namespace {

// A time before zero is stored as its two's complement.
bool IsAfter(const SeekPoint& point, std::uint64_t time) {
  return static_cast<std::int64_t>(point.time) > static_cast<std::int64_t>(time);
}

}  // namespace

bool IsIndexSorted(std::span<const SeekPoint> index) {
  return std::ranges::is_sorted(index, {},
                                [](const SeekPoint& point) { return static_cast<std::int64_t>(point.time); });
}

std::int32_t FindIndexEntry(std::span<const SeekPoint> index, std::uint64_t time, std::uint64_t duration,
                            bool isSorted) {
  if (index.empty()) return 0;
  const std::uint64_t last = index.size() - 1;
  std::uint64_t entry = duration == 0 ? 0 : last * time / duration;
  if (entry > last) return 0;
  if (isSorted) {
    const auto later =
        std::ranges::partition_point(index, [time](const SeekPoint& point) { return !IsAfter(point, time); });
    return later == index.begin() ? 0 : static_cast<std::int32_t>(later - index.begin()) - 1;
  }
  while (entry > 0 && IsAfter(index[static_cast<std::size_t>(entry)], time)) --entry;
  if (!IsAfter(index[static_cast<std::size_t>(entry)], time)) {
    while (entry < last && !IsAfter(index[static_cast<std::size_t>(entry + 1)], time)) ++entry;
  }
  return static_cast<std::int32_t>(entry);
}

}  // namespace tarvex
