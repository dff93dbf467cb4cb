// The head of a block: what stands in front of its frames. Pure functions over bytes; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tarvex {

/// How the frames of a block are laced, as its flags say it.
enum class BlockLacing : std::uint8_t { kNone = 0x00, kXiph = 0x02, kFixed = 0x04, kEbml = 0x06 };

struct BlockHead {
  /// Bytes of the longest: track number, time, flags.
  static constexpr std::size_t kMaxBytes = 8 + 2 + 1;
  /// In the byte of flags: what BlockLacing is about, and that a SimpleBlock is a key frame.
  static constexpr std::uint8_t kLacingFlags = 0x06;
  static constexpr std::uint8_t kKeyFrameFlag = 0x80;

  std::uint64_t track = 0;
  std::int16_t relativeTime = 0;  ///< ticks
  bool isKeyFrame = false;        ///< of a SimpleBlock
  BlockLacing lacing = BlockLacing::kNone;
  std::size_t flags = 0;  ///< where that byte is

  std::size_t Length() const { return flags + 1; }
};

/// From the first bytes of a block's data, of which there are at most BlockHead::kMaxBytes to look at. Nothing when
/// they are none.
std::optional<BlockHead> ParseBlockHead(std::span<const std::uint8_t> bytes);

}  // namespace tarvex
