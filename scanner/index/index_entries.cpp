#include "scanner/index/index_entries.h"

#include <algorithm>
#include <utility>

#include "scanner/limits.h"

namespace tarvex {

void IndexEntries::Add(const SeekPoint& entry) {
  if (m_count++ % m_step != 0) return;
  if (m_entries.size() == limits::kIndexEntries) {
    static_assert(limits::kIndexEntries % 2 == 0, "then this entry is one of those that are kept");
    for (std::size_t kept = 1; kept < m_entries.size() / 2; ++kept) m_entries[kept] = m_entries[2 * kept];
    m_entries.resize(m_entries.size() / 2);
    m_step *= 2;
  }
  m_entries.push_back(entry);
}

void IndexEntries::Reserve(std::uint64_t entries) {
  m_entries.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(entries, limits::kIndexEntries)));
}

std::vector<SeekPoint> IndexEntries::Take() {
  if (m_entries.capacity() - m_entries.size() > m_entries.size() / 8) m_entries.shrink_to_fit();
  m_step = 1;
  m_count = 0;
  return std::exchange(m_entries, {});
}

}  // namespace tarvex
