#include "scanner/elements/element_header.h"

#include <bit>

#include "framework/big_endian.h"

namespace tarvex {

namespace {

/// Bytes of a number whose first byte is `first`.
std::uint32_t CodedLength(std::uint8_t first) { return static_cast<std::uint32_t>(std::countl_zero(first)) + 1; }

}  // namespace

std::optional<ElementHeader> ParseLongElementHeader(std::span<const std::uint8_t> bytes) {
  constexpr std::uint32_t kMaxIdLength = 4;
  constexpr std::uint32_t kMaxSizeLength = 8;
  ElementHeader header;
  if (bytes.empty()) return std::nullopt;
  header.idLength = CodedLength(bytes[0]);
  if (header.idLength > kMaxIdLength || bytes.size() <= header.idLength) return std::nullopt;
  header.id = static_cast<std::uint32_t>(BigEndian(bytes.first(header.idLength)));
  const auto rest = bytes.subspan(header.idLength);
  header.sizeLength = CodedLength(rest[0]);
  if (header.sizeLength > kMaxSizeLength || rest.size() < header.sizeLength) return std::nullopt;
  const std::uint64_t allOnes = (std::uint64_t{1} << (7 * header.sizeLength)) - 1;
  header.size = BigEndian(rest.first(header.sizeLength)) & allOnes;
  header.sizeKnown = header.size != allOnes;
  return header;
}

}  // namespace tarvex
