// A first-in-first-out list that keeps its room: in steady use nothing is allocated. Belongs to one
// object, which guards it.
#pragma once

#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

namespace tarvex {

/// T is default-constructible and movable; a taken entry is left as T{}.
template <class T>
class RingQueue {
 public:
  explicit RingQueue(std::size_t room) : m_entries(std::bit_ceil(room)) {}

  std::size_t Size() const noexcept { return m_count; }
  bool Empty() const noexcept { return m_count == 0; }
  T& Front() noexcept { return m_entries[m_first]; }
  /// The entry so far behind the first; there is one.
  T& At(std::size_t offset) noexcept { return m_entries[Place(offset)]; }

  /// Makes room for so many more entries. Throws std::bad_alloc, and is unchanged then.
  void KeepFree(std::size_t count) {
    if (m_count + count > m_mask + 1) Grow(m_count + count);
  }

  /// Throws std::bad_alloc, and is unchanged then; not when there is room.
  void Push(T&& entry) {
    KeepFree(1);
    m_entries[Place(m_count)] = std::move(entry);
    ++m_count;
  }
  void Push(const T& entry) { Push(T(entry)); }

  /// Not to be called when empty.
  T Pop() noexcept {
    T entry = std::exchange(m_entries[m_first], T{});
    m_first = Place(1);
    --m_count;
    return entry;
  }

  /// Not for entries that own something: they stay where they are.
  void Clear() noexcept { m_count = 0; }

  void Swap(RingQueue& other) noexcept {
    m_entries.swap(other.m_entries);
    std::swap(m_mask, other.m_mask);
    std::swap(m_first, other.m_first);
    std::swap(m_count, other.m_count);
  }

 private:
  // Of the entry so far behind the first. There is room for a power of two.
  std::size_t Place(std::size_t offset) const noexcept { return (m_first + offset) & m_mask; }

  void Grow(std::size_t room) {
    std::vector<T> larger(std::bit_ceil(room));
    for (std::size_t i = 0; i < m_count; ++i) larger[i] = std::move(m_entries[Place(i)]);
    m_entries.swap(larger);
    m_mask = m_entries.size() - 1;
    m_first = 0;
  }

  std::vector<T> m_entries;
  std::size_t m_mask = m_entries.size() - 1;
  std::size_t m_first = 0;
  std::size_t m_count = 0;
};

}  // namespace tarvex
