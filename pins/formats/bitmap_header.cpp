// Reading a bitmap header. Pure; any thread.
#include "pins/formats/bitmap_header.h"

#include <cstring>

#include "framework/message_error.h"

namespace tarvex {

BitmapDescription ReadBitmapHeader(std::span<const std::uint8_t> bytes) {
  BitmapDescription result{};
  if (bytes.size() < sizeof result.header) throw MessageError("KaxCodecPrivate is too short");
  std::memcpy(&result.header, bytes.data(), sizeof result.header);
  result.extra = bytes.subspan(sizeof result.header);
  return result;
}

}  // namespace tarvex
