// Expected media types, written field by field from the published layouts, and the comparison with what
// was built. Shared by the media type tests.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "framework/media_type.h"
#include "framework/message_error.h"
#include "tests/pins_creator/track_builder.h"

namespace tarvex::test {

/// A format block of zeros with numbers and bytes put at offsets, little-endian.
class Block {
 public:
  explicit Block(std::size_t size) : m_bytes(size) {}

  Block& U16(std::size_t offset, std::uint64_t value) { return Put(offset, value, 2); }
  Block& U32(std::size_t offset, std::uint64_t value) { return Put(offset, value, 4); }
  Block& U64(std::size_t offset, std::uint64_t value) { return Put(offset, value, 8); }
  Block& Data(std::size_t offset, const ByteVector& bytes);
  Block& Text(std::size_t offset, const std::string& text);

  const ByteVector& Bytes() const { return m_bytes; }

 private:
  Block& Put(std::size_t offset, std::uint64_t value, unsigned width);

  ByteVector m_bytes;
};

/// GUIDs as text without braces, upper case. Flags start as a new media type has them.
struct Expected {
  std::string major;
  std::string subtype;
  std::string format;
  ByteVector block;
  bool fixedSize = true;
  bool temporal = false;
};

inline constexpr char kNullGuid[] = "00000000-0000-0000-0000-000000000000";
inline constexpr char kVideo[] = "73646976-0000-0010-8000-00AA00389B71";
inline constexpr char kAudio[] = "73647561-0000-0010-8000-00AA00389B71";
inline constexpr char kSubtitle[] = "E487EB08-6B26-4BE9-9DD3-993434D313FD";

/// Every field and every byte.
void ExpectType(const CMediaType& type, const Expected& expected);

/// The text of the MessageError that `action` throws, or "nothing thrown".
template <class Action>
std::string ThrownBy(Action action) {
  try {
    action();
  } catch (const MessageError& error) {
    return error.what();
  }
  return "nothing thrown";
}

std::string Hex(std::span<const std::uint8_t> bytes);

}  // namespace tarvex::test
