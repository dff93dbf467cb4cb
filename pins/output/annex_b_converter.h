// Rewrites H.264 frames from length-prefixed NAL units to start codes. A member of the video pin; used on
// the worker.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "framework/media_type.h"
#include "scanner/frames/frame_info.h"

namespace tarvex {

class AnnexBConverter {
 public:
  /// For the connection's type: none unless it is H.264 with start codes and tells the size of the
  /// lengths. Throws std::bad_alloc.
  static std::optional<AnnexBConverter> For(const CMediaType& type);

  /// `lengthSize`: bytes of a unit's length, 1 to 4. `parameterSets`: entries of a 16-bit big-endian
  /// length and that many bytes; of these the first two go in front of key frames that have none.
  AnnexBConverter(unsigned lengthSize, std::span<const std::uint8_t> parameterSets);

  /// The same frame with other bytes, which are this object's and live until the next call. A unit that
  /// claims more than the frame has is what is there. Throws MessageError for a frame that could never be
  /// delivered, std::bad_alloc.
  FrameInfo Convert(const FrameInfo& frame);

 private:
  using Bytes = std::span<const std::uint8_t>;

  template <class Use>
  void ForEachUnit(const FrameInfo& frame, Use&& use) const;
  bool NeedsPrefix(const FrameInfo& frame) const;
  static void AppendUnit(std::vector<std::uint8_t>& out, Bytes unit);

  unsigned m_lengthSize;
  std::vector<std::uint8_t> m_prefix;     // with start codes
  std::vector<std::uint8_t> m_converted;  // kept for its room
};

}  // namespace tarvex
