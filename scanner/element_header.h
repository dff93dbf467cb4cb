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

/// Nothing when `bytes` begin with no such head, or with one that is cut.
std::optional<ElementHeader> ParseElementHeader(std::span<const std::uint8_t> bytes);

}  // namespace tarvex
