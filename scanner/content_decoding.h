// Undoing a track's content compression, frame by frame. Free functions over values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>

#include "scanner/frame_info.h"
#include "scanner/heap.h"

namespace tarvex {

/// Owns the bytes of a frame that decoding replaced. May be empty.
class DecodedFrame {
 public:
  DecodedFrame() = default;

  /// Changes the size, keeping what fits. Throws std::bad_alloc and then stays as it was.
  void Resize(std::size_t size);

  std::uint8_t* Data() noexcept { return m_data.get(); }
  std::span<const std::uint8_t> Bytes() const noexcept { return {m_data.get(), m_size}; }

 private:
  struct Free {
    void operator()(std::uint8_t* data) const noexcept { std::free(data); }
  };
  std::unique_ptr<std::uint8_t, Free> m_data;
  std::size_t m_size = 0;
};

/// `settings` followed by `frame`; nothing when that is more than a frame can be.
std::optional<DecodedFrame> RestoreHeader(std::span<const std::uint8_t> settings, std::span<const std::uint8_t> frame);

/// What zlib makes of `frame`, as far as the limit; nothing when it is corrupt up to there, or empty.
std::optional<DecodedFrame> Inflate(std::span<const std::uint8_t> frame);

/// True: the frame's data and size were replaced and now lie in `owner`. False: the frame is as it was,
/// since `track` (may be null) is not compressed, or not in a way that can be undone.
bool DecodeFrame(const CHeap* track, FrameInfo& frame, DecodedFrame& owner);

}  // namespace tarvex
