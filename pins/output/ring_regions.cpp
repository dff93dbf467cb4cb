// Taking and giving back the regions of a ring.
#include "pins/output/ring_regions.h"

namespace tarvex {

void RingRegions::Reset(std::uint32_t size) noexcept {
  *this = RingRegions{};
  m_size = size;
}

bool RingRegions::Take(Region& region, std::size_t size) noexcept {
  if (IsEmpty()) {
    m_cursor = 0;
    m_bound = nullptr;
  } else if (!Fits(size) && m_lowest->start > 0) {
    m_cursor = 0;
    m_bound = m_lowest;
  }
  if (!Fits(size)) return false;
  region = Region{.start = m_cursor, .end = m_cursor + static_cast<std::uint32_t>(size)};
  m_cursor = region.end;
  if (size != 0) Link(region);
  return true;
}

// Everything between the cursor and the bound is free, so the new region's neighbour above is the bound.
void RingRegions::Link(Region& region) noexcept {
  region.above = m_bound;
  region.below = m_bound == nullptr ? m_highest : m_bound->below;
  (region.below == nullptr ? m_lowest : region.below->above) = &region;
  (region.above == nullptr ? m_highest : region.above->below) = &region;
}

void RingRegions::Give(Region& region) noexcept {
  if (region.start == region.end) return;
  // Without its bound the free span goes on to the next region.
  if (m_bound == &region) m_bound = region.above;
  (region.below == nullptr ? m_lowest : region.below->above) = region.above;
  (region.above == nullptr ? m_highest : region.above->below) = region.below;
  region = Region{};
}

}  // namespace tarvex
