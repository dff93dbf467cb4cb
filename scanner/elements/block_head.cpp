#include "scanner/elements/block_head.h"

#include <bit>

#include "framework/big_endian.h"

namespace tarvex {

std::optional<BlockHead> ParseBlockHead(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kTimeAndFlags = 3;
  if (bytes.empty() || bytes[0] == 0) return std::nullopt;
  const auto length = static_cast<std::size_t>(std::countl_zero(bytes[0])) + 1;
  if (bytes.size() < length + kTimeAndFlags) return std::nullopt;
  const std::uint64_t marker = std::uint64_t{1} << (7 * length);
  BlockHead head;
  head.flags = length + 2;
  const std::uint8_t flags = bytes[head.flags];
  head.track = BigEndian(bytes.first(length)) & (marker - 1);
  head.relativeTime = static_cast<std::int16_t>(BigEndian(bytes.subspan(length, 2)));
  head.isKeyFrame = (flags & BlockHead::kKeyFrameFlag) != 0;
  head.lacing = static_cast<BlockLacing>(flags & BlockHead::kLacingFlags);
  return head;
}

}  // namespace tarvex
