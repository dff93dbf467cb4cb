// What the calling thread, or all of them, hold on the heap, and the most that they ever held: the C++ allocations,
// and those of the C libraries that are linked in. Replaces the allocation functions of the program that links it.
#pragma once

#include <cstdint>

namespace tarvex::test {

/// While it lives, the calling thread's heap is not counted, for a look at the time. What is allocated meanwhile
/// has to be given back meanwhile.
class NoHeapCount {
 public:
  NoHeapCount() noexcept;
  ~NoHeapCount();
  NoHeapCount(const NoHeapCount&) = delete;
  NoHeapCount& operator=(const NoHeapCount&) = delete;
};

/// From construction on, on the constructing thread. One at a time.
class HeapCount {
 public:
  HeapCount() noexcept;
  /// Bytes above what was held at the construction.
  std::int64_t Peak() const noexcept;
  std::int64_t Now() const noexcept;
  /// How often memory was asked for.
  std::uint64_t Allocations() const noexcept;
  /// The same of all threads, since the program began.
  static std::uint64_t OfAllThreads() noexcept;

 private:
  std::int64_t m_start;
  std::uint64_t m_firstAllocation;
};

/// The heap of all threads from construction on. One at a time; made and asked by any thread.
class WholeHeapCount {
 public:
  WholeHeapCount() noexcept;
  /// Bytes above what was held at the construction.
  std::int64_t Peak() const noexcept;

 private:
  std::int64_t m_start;
};

}  // namespace tarvex::test
