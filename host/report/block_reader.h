// Reading structures and numbers out of a format block, with bounds. A free function over values; any
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

namespace tarvex::host {

/// A copy of the T that begins at `offset`; nothing when the block ends before it does. The block need
/// not be aligned for T.
template <class T>
std::optional<T> ReadBlock(const std::vector<std::uint8_t>& block, std::size_t offset = 0) {
  if (offset > block.size() || block.size() - offset < sizeof(T)) return std::nullopt;
  T value{};
  std::memcpy(&value, block.data() + offset, sizeof(T));
  return value;
}

}  // namespace tarvex::host
