// The Xiph lacing walk. Pure; any thread.
#include "pins/creator/xiph_lacing.h"

#include "framework/message_error.h"

namespace tarvex {

namespace {

using Bytes = std::span<const std::uint8_t>;

std::uint8_t TakeByte(Bytes& bytes) {
  if (bytes.empty()) throw MessageError("KaxCodecPrivate is too short");
  const std::uint8_t byte = bytes.front();
  bytes = bytes.subspan(1);
  return byte;
}

// The sum of bytes up to and with the first that is not 255. At most 255 times the input's size.
std::uint64_t TakeSize(Bytes& bytes) {
  std::uint64_t size = 0;
  std::uint8_t byte = 255;
  while (byte == 255) {
    byte = TakeByte(bytes);
    size += byte;
  }
  return size;
}

}  // namespace

std::vector<Bytes> ReadXiphLacing(Bytes bytes) {
  std::vector<std::uint64_t> sizes(TakeByte(bytes));
  for (std::uint64_t& size : sizes) size = TakeSize(bytes);
  std::vector<Bytes> packets;
  packets.reserve(sizes.size() + 1);
  for (const std::uint64_t size : sizes) {
    if (size > bytes.size()) throw MessageError("KaxCodecPrivate is too short");
    packets.push_back(bytes.first(static_cast<std::size_t>(size)));
    bytes = bytes.subspan(static_cast<std::size_t>(size));
  }
  packets.push_back(bytes);
  return packets;
}

}  // namespace tarvex
