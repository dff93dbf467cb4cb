// The owner of a block from the task allocator, the memory that crosses module borders. A value that can be moved; one
// thread at a time.
#pragma once

#include <cstddef>
#include <new>
#include <string_view>
#include <utility>

#include "framework/platform/platform.h"

namespace tarvex {

/// Owns an array of plain T from CoTaskMemAlloc.
template <class T>
class CoTaskMem {
 public:
  CoTaskMem() noexcept = default;
  ~CoTaskMem() { CoTaskMemFree(m_block); }
  CoTaskMem(CoTaskMem&& other) noexcept : m_block(std::exchange(other.m_block, nullptr)) {}
  CoTaskMem& operator=(CoTaskMem&& other) noexcept {
    std::swap(m_block, other.m_block);
    return *this;
  }
  CoTaskMem(const CoTaskMem&) = delete;
  CoTaskMem& operator=(const CoTaskMem&) = delete;

  /// A block of `count` elements, not initialised. Throws std::bad_alloc.
  static CoTaskMem Allocate(std::size_t count) {
    CoTaskMem owner;
    owner.m_block =
        static_cast<T*>(count > static_cast<std::size_t>(-1) / sizeof(T) ? nullptr : CoTaskMemAlloc(count * sizeof(T)));
    if (owner.m_block == nullptr) throw std::bad_alloc();
    return owner;
  }

  T* Get() const noexcept { return m_block; }
  T& operator[](std::size_t index) const noexcept { return m_block[index]; }
  explicit operator bool() const noexcept { return m_block != nullptr; }

  /// Gives the block to the caller, who frees it with CoTaskMemFree.
  [[nodiscard]] T* Detach() noexcept { return std::exchange(m_block, nullptr); }
  /// For functions that store a block through a pointer: frees the present one first.
  T** Put() noexcept {
    CoTaskMemFree(std::exchange(m_block, nullptr));
    return &m_block;
  }

 private:
  T* m_block = nullptr;
};

/// A zero-terminated copy of `text` for a COM output argument. Throws std::bad_alloc.
CoTaskMem<OLECHAR> TaskString(std::basic_string_view<OLECHAR> text);

}  // namespace tarvex
