// Reading a bitmap header from the codec private of "V_MS/VFW/FOURCC" tracks. A pure function over bytes.
#pragma once

#include <cstdint>
#include <span>

#include "framework/platform/platform.h"

namespace tarvex {

struct BitmapDescription {
  BITMAPINFOHEADER header;
  std::span<const std::uint8_t> extra;  ///< what follows the header: a view into the input
};

/// Throws MessageError when there are fewer bytes than a header has.
BitmapDescription ReadBitmapHeader(std::span<const std::uint8_t> bytes);

}  // namespace tarvex
