// One frame on its way from the scanner to an output pin. A plain value; it and the
// bytes it points to are valid only during the call that hands it on.
#pragma once

#include <cstdint>

namespace tarvex {

struct FrameInfo {
  bool keyFrame = false;          ///< decodable on its own
  std::uint32_t trackNumber = 0;  ///< the number in the block header
  std::uint64_t start = 0;        ///< 100 ns units; a time before zero is its two's complement
  std::uint64_t duration = 0;     ///< 100 ns units; 0 = unknown
  const std::uint8_t* data = nullptr;
  std::uint32_t size = 0;  ///< bytes at `data`
};

}  // namespace tarvex
