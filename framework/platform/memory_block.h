// A large block straight from the system: at first addresses only, then memory for them, from the front on, as it is
// asked for. Owned by an allocator, which guards it.
#pragma once

#include <cstddef>

#include "framework/platform/platform.h"

namespace tarvex {

class MemoryBlock {
 public:
  /// Memory is taken in steps of so many bytes. A pin of subtitles then costs little, and a ring that fills asks some
  /// ten times only.
  static constexpr std::size_t kStep = 256 * 1024;

  MemoryBlock() noexcept = default;
  ~MemoryBlock() { Free(); }
  MemoryBlock(const MemoryBlock&) = delete;
  MemoryBlock& operator=(const MemoryBlock&) = delete;

  /// Replaces the block by one of `size` bytes, aligned to a page, none of which may be touched yet and for which the
  /// system sets no memory aside. False when there are no such addresses; then there is no block.
  bool Reserve(std::size_t size) noexcept;
  /// The first `size` bytes of the block may be touched from now on; they are zero at first. False when there is
  /// no memory for them.
  bool CommitTo(std::size_t size) noexcept { return size <= m_committed || CommitMore(size); }
  void Free() noexcept;

  BYTE* Data() const noexcept { return m_data; }
  std::size_t Size() const noexcept { return m_size; }

 private:
  bool CommitMore(std::size_t size) noexcept;
  /// Bytes to take so that the first `size` have memory: up to a step, or to the block's end.
  std::size_t StepFor(std::size_t size) const noexcept {
    return m_size - size < kStep ? m_size : (size + kStep - 1) / kStep * kStep;
  }

  BYTE* m_data = nullptr;
  std::size_t m_size = 0;
  std::size_t m_committed = 0;
};

}  // namespace tarvex
