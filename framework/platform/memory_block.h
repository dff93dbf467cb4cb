// A large block of memory straight from the system, whose pages cost nothing until they are touched.
// Owned by an allocator.
#pragma once

#include <cstddef>
#include <utility>

#include "framework/platform/platform.h"

namespace tarvex {

class MemoryBlock {
 public:
  MemoryBlock() noexcept = default;
  ~MemoryBlock() { Free(); }
  MemoryBlock(MemoryBlock&& other) noexcept
      : m_data(std::exchange(other.m_data, nullptr)), m_size(std::exchange(other.m_size, 0)) {}
  MemoryBlock& operator=(MemoryBlock&& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    return *this;
  }
  MemoryBlock(const MemoryBlock&) = delete;
  MemoryBlock& operator=(const MemoryBlock&) = delete;

  /// Replaces the block by one of `size` zero bytes, aligned to a page. False when there is none.
  bool Allocate(std::size_t size) noexcept;
  void Free() noexcept;

  BYTE* Data() const noexcept { return m_data; }
  std::size_t Size() const noexcept { return m_size; }

 private:
  BYTE* m_data = nullptr;
  std::size_t m_size = 0;
};

}  // namespace tarvex
