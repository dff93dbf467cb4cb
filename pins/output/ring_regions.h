// The arithmetic of a ring of regions of any size: where the next one goes, and when there is no room.
// Works on offsets and touches no memory. Belongs to one sample buffer, which guards it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvex {

/// Regions are taken in ascending order. When the free span before the next region that is out is too
/// short, taking goes on at the block's start, up to the lowest region that is out. Regions may be given
/// back in any order. Every operation takes constant time and no memory.
class RingRegions {
 public:
  /// One region that is out. The taker owns the record and keeps it in place until it gives it back.
  struct Region {
    std::uint32_t start = 0;
    std::uint32_t end = 0;  ///< one past the last byte
    Region* below = nullptr;
    Region* above = nullptr;
  };

  /// Forgets everything; the block has `size` bytes. No region is out.
  void Reset(std::uint32_t size) noexcept;

  /// Fills `region`, or answers false when there is no room now. An empty region always has room, takes
  /// none and bounds nothing: it may start where another does.
  bool Take(Region& region, std::size_t size) noexcept;
  void Give(Region& region) noexcept;

  /// No region but empty ones is out.
  bool IsEmpty() const noexcept { return m_lowest == nullptr; }
  std::uint32_t Size() const noexcept { return m_size; }

 private:
  std::uint32_t Limit() const noexcept { return m_bound == nullptr ? m_size : m_bound->start; }
  bool Fits(std::size_t size) const noexcept { return Limit() - m_cursor >= size; }
  void Link(Region& region) noexcept;

  std::uint32_t m_size = 0;
  std::uint32_t m_cursor = 0;  // where the next region starts
  Region* m_bound = nullptr;   // the first region at or above the cursor: ends the free span; null: the block does
  Region* m_lowest = nullptr;  // regions that are out, by address
  Region* m_highest = nullptr;
};

}  // namespace tarvex
