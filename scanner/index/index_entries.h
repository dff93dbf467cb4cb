// The entries of a seek index while it is made: so many at most, and evenly spread. Owned by whoever makes the index;
// one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scanner/index/seek_point.h"

namespace tarvex {

class IndexEntries {
 public:
  /// Keeps every entry until there are limits::kIndexEntries, then every second of all, the coming ones included, and
  /// so on. So a seek leads a little further back, wherever it leads.
  void Add(const SeekPoint& entry);
  /// Room for so many, as far as the limit.
  void Reserve(std::uint64_t entries);

  bool IsThinned() const { return m_step > 1; }
  const std::vector<SeekPoint>& Entries() const { return m_entries; }
  /// Gives them away, without room for more.
  std::vector<SeekPoint> Take();

 private:
  std::vector<SeekPoint> m_entries;
  std::uint64_t m_step = 1;   // one of so many is kept
  std::uint64_t m_count = 0;  // that came
};

}  // namespace tarvex
