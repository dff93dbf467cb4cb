// Reading elements that are just as a muxer writes them, straight from their bytes: for long lists, where
// an object for each would take most of the time. Pure functions over bytes; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tarvex {

/// An element of known size that lies whole in the bytes it was read from.
struct PlainElement {
  std::uint32_t id = 0;  ///< with its length marker
  std::span<const std::uint8_t> data;
  std::size_t length = 0;  ///< bytes of head and data
};

/// Nothing when `bytes` do not begin with such an element.
std::optional<PlainElement> ParsePlainElement(std::span<const std::uint8_t> bytes);

/// A checksum or a void, which may stand anywhere and mean nothing here.
bool IsFilling(const PlainElement& element);

/// The number that an element of 1 to 8 bytes holds.
std::optional<std::uint64_t> PlainNumber(std::span<const std::uint8_t> data);

/// What the seek index needs of a cue point.
struct PlainCuePoint {
  std::uint64_t time = 0;  ///< ticks
  std::uint64_t track = 0;
  std::uint64_t position = 0;  ///< of the Cluster, from the Segment's data
};

/// Of several positions, the first of the earliest Cluster; of track 0 when there are none. Nothing when anything else
/// is missing, comes twice or is unknown.
std::optional<PlainCuePoint> ParsePlainCuePoint(std::span<const std::uint8_t> data);

}  // namespace tarvex
