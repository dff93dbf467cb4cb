// The avcC walk. Pure; any thread.
#include "pins/formats/avcc.h"

#include "framework/message_error.h"

namespace tarvex {

namespace {

constexpr std::size_t kFixedPart = 6;  // version, profile, compatibility, level, length size, set count

using Bytes = std::span<const std::uint8_t>;

// Splits `bytes` after `count` entries of a 16-bit length and its bytes.
Bytes TakeSets(Bytes& bytes, unsigned count) {
  const Bytes start = bytes;
  for (; count > 0; --count) {
    if (bytes.size() < 2) throw MessageError("KaxCodecPrivate is too short");
    const std::size_t length = std::size_t{bytes[0]} << 8 | bytes[1];
    bytes = bytes.subspan(2);
    if (bytes.size() < length) throw MessageError("KaxCodecPrivate is too short");
    bytes = bytes.subspan(length);
  }
  return start.first(start.size() - bytes.size());
}

}  // namespace

AvccRecord ReadAvcc(Bytes bytes) {
  if (bytes.size() < kFixedPart) throw MessageError("KaxCodecPrivate is too short");
  AvccRecord record;
  record.profile = bytes[1];
  record.level = bytes[3];
  record.nalLengthSize = static_cast<std::uint8_t>((bytes[4] & 3) + 1);
  Bytes rest = bytes.subspan(kFixedPart);
  record.sequenceSets = TakeSets(rest, bytes[5] & 31u);
  if (rest.empty()) throw MessageError("KaxCodecPrivate is too short");
  const unsigned pictureCount = rest.front();
  rest = rest.subspan(1);
  record.pictureSets = TakeSets(rest, pictureCount);
  return record;
}

}  // namespace tarvex
