// Reading a track's elements as the media type builders need them, with their widths, and laying out a
// format block. Free functions, called while a file is opened.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "framework/media_type.h"

namespace tarvex {

class CHeap;

/// The low 32 bits of an unsigned element, which is all that the format blocks have room for.
std::optional<std::uint32_t> Unsigned32(const CHeap& track, std::string_view key);

/// Fills the format block with `header` and, after it, `data`. Throws MessageError when a block cannot
/// be that large.
void SetFormatBlock(CMediaType& type, std::span<const std::uint8_t> header, std::span<const std::uint8_t> data);

/// Bytes of a block of these two parts. Throws MessageError when that is more than a block can have.
std::uint32_t FormatBlockSize(std::uint64_t header, std::uint64_t data);

/// The first `length` bytes of a structure; all of them without it.
template <class T>
std::span<const std::uint8_t> BytesOf(const T& value, std::size_t length = sizeof(T)) {
  return {reinterpret_cast<const std::uint8_t*>(&value), length};
}

}  // namespace tarvex
