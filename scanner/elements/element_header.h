// The head of one EBML element: identifier and data size. Pure functions over bytes; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tarvex {

struct ElementHeader {
  static constexpr std::size_t kMaxBytes = 4 + 8;

  std::uint32_t id = 0;  ///< with its length marker
  std::uint32_t idLength = 0;
  std::uint64_t size = 0;  ///< bytes of data; meaningless when unknown
  std::uint32_t sizeLength = 0;
  bool sizeKnown = false;

  std::size_t Length() const { return idLength + sizeLength; }
};

std::optional<ElementHeader> ParseLongElementHeader(std::span<const std::uint8_t> bytes);

/// Nothing when `bytes` begin with no such head, or with one that is cut. In place for what most are: an identifier
/// and a size of one byte each.
inline std::optional<ElementHeader> ParseElementHeader(std::span<const std::uint8_t> bytes) {
  constexpr std::uint8_t kMarker = 0x80;
  constexpr std::uint8_t kUnknownSize = 0xFF;
  const bool isShort = bytes.size() >= 2 && bytes[0] >= kMarker && bytes[1] >= kMarker && bytes[1] != kUnknownSize;
  if (!isShort) return ParseLongElementHeader(bytes);
  return ElementHeader{bytes[0], 1, bytes[1] ^ std::uint64_t{kMarker}, 1, true};
}

}  // namespace tarvex
