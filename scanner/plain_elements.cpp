#include "scanner/plain_elements.h"

#include <bit>

#include "framework/big_endian.h"
#include "scanner/element_header.h"

namespace tarvex {

namespace {

// Identifiers; see the format's definition.
constexpr std::uint32_t kCueTime = 0xB3;
constexpr std::uint32_t kCueTrackPositions = 0xB7;
constexpr std::uint32_t kCueTrack = 0xF7;
constexpr std::uint32_t kCueClusterPosition = 0xF1;
constexpr std::uint32_t kCueRelativePosition = 0xF0;
constexpr std::uint32_t kCueDuration = 0xB2;
constexpr std::uint32_t kCueBlockNumber = 0x5378;

/// Stores the number of an element that comes once. False when it is none, or was there before.
bool StoreOnce(const PlainElement& element, std::optional<std::uint64_t>& value) {
  if (value) return false;
  value = PlainNumber(element.data);
  return value.has_value();
}

struct Positions {
  std::optional<std::uint64_t> track;
  std::optional<std::uint64_t> cluster;
};

bool ReadPositions(std::span<const std::uint8_t> data, Positions& positions) {
  while (!data.empty()) {
    const auto child = ParsePlainElement(data);
    if (!child) return false;
    data = data.subspan(child->length);
    if (child->id == kCueTrack) {
      if (!StoreOnce(*child, positions.track)) return false;
    } else if (child->id == kCueClusterPosition) {
      if (!StoreOnce(*child, positions.cluster)) return false;
    } else {
      const bool isKnown =
          child->id == kCueRelativePosition || child->id == kCueDuration || child->id == kCueBlockNumber;
      if (!isKnown || !PlainNumber(child->data)) return false;
    }
  }
  // Positions that no file has are left to libmatroska.
  constexpr std::uint64_t kTooFar = std::uint64_t{1} << 56;
  return positions.track && positions.cluster && *positions.cluster < kTooFar;
}

}  // namespace

std::optional<PlainElement> ParsePlainElement(std::span<const std::uint8_t> bytes) {
  const auto header = ParseElementHeader(bytes);
  if (!header || !header->sizeKnown || header->size > bytes.size() - header->Length()) return std::nullopt;
  const auto size = static_cast<std::size_t>(header->size);
  return PlainElement{header->id, bytes.subspan(header->Length(), size), header->Length() + size};
}

std::optional<std::uint64_t> PlainNumber(std::span<const std::uint8_t> data) {
  if (data.empty() || data.size() > sizeof(std::uint64_t)) return std::nullopt;
  return BigEndian(data);
}

std::optional<PlainCuePoint> ParsePlainCuePoint(std::span<const std::uint8_t> data) {
  std::optional<std::uint64_t> time;
  std::optional<Positions> earliest;
  while (!data.empty()) {
    const auto child = ParsePlainElement(data);
    if (!child) return std::nullopt;
    data = data.subspan(child->length);
    if (child->id == kCueTime) {
      if (!StoreOnce(*child, time)) return std::nullopt;
    } else if (child->id == kCueTrackPositions) {
      if (child->data.empty()) continue;
      Positions positions;
      if (!ReadPositions(child->data, positions)) return std::nullopt;
      if (!earliest || *positions.cluster < *earliest->cluster) earliest = positions;
    } else {
      return std::nullopt;
    }
  }
  if (!earliest) return PlainCuePoint{};
  if (!time) return std::nullopt;
  return PlainCuePoint{*time, *earliest->track, *earliest->cluster};
}

std::optional<PlainBlock> ParsePlainBlock(std::span<const std::uint8_t> head) {
  constexpr std::size_t kTimeAndFlags = 3;
  if (head.empty() || head[0] == 0) return std::nullopt;
  const auto length = static_cast<std::size_t>(std::countl_zero(head[0])) + 1;
  if (head.size() < length + kTimeAndFlags) return std::nullopt;
  const std::uint64_t marker = std::uint64_t{1} << (7 * length);
  const auto rest = head.subspan(length);
  PlainBlock block;
  block.track = BigEndian(head.first(length)) & (marker - 1);
  block.relativeTime = static_cast<std::int16_t>(BigEndian(rest.first(2)));
  block.isKeyFrame = (rest[2] & 0x80) != 0;
  block.isLaced = (rest[2] & 0x06) != 0;
  return block;
}

}  // namespace tarvex
