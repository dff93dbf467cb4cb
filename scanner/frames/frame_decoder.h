// Undoing a track's content compression, frame by frame. Owned by the scanner; for one thread at a time.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "scanner/elements/heap.h"
#include "scanner/frames/frame_info.h"

namespace tarvex {

/// Keeps what zlib needs, and its buffer, from frame to frame: in steady use nothing is allocated.
class FrameDecoder {
 public:
  /// True: the frame's data and size were replaced; the bytes lie here until the next call. False: the frame is
  /// as it was, since `track` (may be null) is not compressed, or not in a way that can be undone, or the frame is
  /// corrupt. Of what zlib makes of a frame, no more than a limit. Throws std::bad_alloc.
  bool Decode(const CHeap* track, FrameInfo& frame);

 private:
  struct EndInflate {
    void operator()(z_stream* stream) const noexcept;
  };

  bool Inflate(std::span<const std::uint8_t> frame);
  bool RestoreHeader(std::span<const std::uint8_t> settings, std::span<const std::uint8_t> frame);
  bool BeginInflate(std::span<const std::uint8_t> frame);
  void MakeRoom(std::size_t size);

  std::unique_ptr<z_stream, EndInflate> m_stream;  // null before the first frame
  std::vector<std::uint8_t> m_bytes;               // its size is the room there is
  std::size_t m_size = 0;                          // of the decoded frame
};

}  // namespace tarvex
