// Narrowing reads and format blocks. Called while a file is opened.
#include "pins/creator/track_elements.h"

#include <algorithm>
#include <limits>

#include "framework/message_error.h"
#include "scanner/elements/heap.h"

namespace tarvex {

std::optional<std::uint32_t> Unsigned32(const CHeap& track, std::string_view key) {
  const std::optional<std::uint64_t> value = track.Unsigned(key);
  if (!value) return std::nullopt;
  return static_cast<std::uint32_t>(*value);
}

std::uint32_t FormatBlockSize(std::uint64_t header, std::uint64_t data) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
  if (header > kLargest || data > kLargest - header) throw MessageError("KaxCodecPrivate is too large");
  return static_cast<std::uint32_t>(header + data);
}

void SetFormatBlock(CMediaType& type, std::span<const std::uint8_t> header, std::span<const std::uint8_t> data) {
  BYTE* block = type.AllocFormatBuffer(FormatBlockSize(header.size(), data.size()));
  std::ranges::copy(data, std::ranges::copy(header, block).out);
}

}  // namespace tarvex
