// The walk over an AVC decoder configuration record ("avcC"), the codec private of H.264 tracks. A pure
// function over bytes.
#pragma once

#include <cstdint>
#include <span>

namespace tarvex {

/// What pins need of the record. The spans are views into it.
struct AvccRecord {
  std::uint8_t profile = 0;
  std::uint8_t level = 0;
  std::uint8_t nalLengthSize = 0;  ///< bytes of a NAL unit's length: 1 to 4
  // Entries of a 16-bit big-endian length and as many bytes each.
  std::span<const std::uint8_t> sequenceSets;
  std::span<const std::uint8_t> pictureSets;
};

/// Throws MessageError when the record ends before its parameter sets do. Bytes after them are ignored.
AvccRecord ReadAvcc(std::span<const std::uint8_t> bytes);

}  // namespace tarvex
