// Numbers of any length, most significant byte first, as Matroska and H.264 store them. For any thread.
#pragma once

#include <cstdint>
#include <span>

namespace tarvex {

/// The number in `bytes`. Of more than eight the last eight count.
constexpr std::uint64_t BigEndian(std::span<const std::uint8_t> bytes) {
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  return value;
}

}  // namespace tarvex
