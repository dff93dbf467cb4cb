// The Xiph lacing walk. Pure; any thread.
#include "pins/formats/xiph_lacing.h"

namespace tarvex {

namespace {

using Bytes = std::span<const std::uint8_t>;

std::optional<std::uint8_t> TakeByte(Bytes& bytes) {
  if (bytes.empty()) return std::nullopt;
  const std::uint8_t byte = bytes.front();
  bytes = bytes.subspan(1);
  return byte;
}

// The sum of bytes up to and with the first that is not 255. At most 255 times the input's size.
std::optional<std::uint64_t> TakeSize(Bytes& bytes) {
  std::uint64_t size = 0;
  while (const auto byte = TakeByte(bytes)) {
    size += *byte;
    if (*byte != 255) return size;
  }
  return std::nullopt;
}

std::optional<std::vector<std::uint64_t>> TakeSizes(Bytes& bytes) {
  const auto count = TakeByte(bytes);
  if (!count) return std::nullopt;
  std::vector<std::uint64_t> sizes(*count);
  for (std::uint64_t& size : sizes) {
    const auto taken = TakeSize(bytes);
    if (!taken) return std::nullopt;
    size = *taken;
  }
  return sizes;
}

}  // namespace

std::optional<std::vector<Bytes>> ReadXiphLacing(Bytes bytes) {
  const auto sizes = TakeSizes(bytes);
  if (!sizes) return std::nullopt;
  std::vector<Bytes> packets;
  packets.reserve(sizes->size() + 1);
  for (const std::uint64_t size : *sizes) {
    if (size > bytes.size()) return std::nullopt;
    packets.push_back(bytes.first(static_cast<std::size_t>(size)));
    bytes = bytes.subspan(static_cast<std::size_t>(size));
  }
  packets.push_back(bytes);
  return packets;
}

}  // namespace tarvex
