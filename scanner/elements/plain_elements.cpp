#include "scanner/elements/plain_elements.h"

#include "framework/big_endian.h"
#include "scanner/elements/element_header.h"
#include "scanner/elements/element_ids.h"
#include "scanner/limits.h"

namespace tarvex {

namespace {

namespace id = element_ids;

/// Stores the number of an element that may come once. False when it is no number, or came before.
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
    if (IsFilling(*child)) continue;
    if (child->id == id::kCueTrack) {
      if (!StoreOnce(*child, positions.track)) return false;
    } else if (child->id == id::kCueClusterPosition) {
      if (!StoreOnce(*child, positions.cluster)) return false;
    } else {
      const bool isKnown = child->id == id::kCueRelativePosition || child->id == id::kCueDuration ||
                           child->id == id::kCueBlockNumber || child->id == id::kCueCodecState;
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

// libebml takes a checksum of another size for none.
bool IsFilling(const PlainElement& element) {
  constexpr std::size_t kChecksumBytes = 4;
  if (element.id == id::kCrc32) return element.data.size() == kChecksumBytes;
  return element.id == id::kVoid && element.data.size() < limits::kElement;
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
    if (IsFilling(*child)) continue;
    if (child->id == id::kCueTime) {
      if (!StoreOnce(*child, time)) return std::nullopt;
    } else if (child->id == id::kCueTrackPositions) {
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

}  // namespace tarvex
