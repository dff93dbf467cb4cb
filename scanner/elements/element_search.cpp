#include "scanner/elements/element_search.h"

#include <algorithm>

#include "scanner/elements/element_ids.h"
#include "scanner/limits.h"

namespace tarvex {

namespace {

constexpr std::size_t kFirstChunk = 64;  // most searches end at once
constexpr std::size_t kLargestChunk = 64 * 1024;

bool BeginsLongId(std::uint8_t byte) { return byte >> 4 == 1; }

/// No more than may be looked at, so that no further bytes have to be read.
std::size_t HeadBytesBefore(std::uint64_t end, std::uint64_t position) {
  return static_cast<std::size_t>(std::min<std::uint64_t>(ElementHeader::kMaxBytes, end - position));
}

bool IsChecksum(const ElementHeader& header) { return header.id == element_ids::kCrc32; }

}  // namespace

std::optional<FoundElement> ElementSearch::From(std::uint64_t position) {
  const std::uint64_t end = std::min(m_end, m_streamLength + 1);
  for (std::size_t chunk = kFirstChunk; position < end;) {
    auto bytes = m_window.From(position, HeadBytesBefore(end, position), chunk);
    if (bytes.size() > end - position) bytes = bytes.first(static_cast<std::size_t>(end - position));
    // A head that the chunk cuts is looked at in the next one.
    const bool isLast = bytes.size() == end - position;
    const std::size_t whole = isLast ? bytes.size() : bytes.size() - ElementHeader::kMaxBytes + 1;
    std::size_t offset = 0;
    while (offset < whole) {
      const auto rest = bytes.subspan(offset);
      if (m_ids.MayBeginWith(rest[0])) {
        if (auto found = LookAt(position + offset, rest)) return found;
      }
      const std::size_t step = PassUnknown(position + offset, rest);
      offset += step == 1 ? 1 : WithoutHidden(position + offset, step);
      if (step != 1 && !HasEnd()) break;  // the window may have moved
    }
    chunk = offset > bytes.size() ? kFirstChunk : std::min(chunk * 8, kLargestChunk);
    position += offset;
  }
  return std::nullopt;
}

std::optional<FoundElement> ElementSearch::At(std::uint64_t position) {
  if (position >= m_end) return std::nullopt;
  const auto bytes = m_window.From(position, HeadBytesBefore(m_end, position), ElementHeader::kMaxBytes);
  return LookAt(position,
                bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), m_end - position))));
}

bool ElementSearch::MayGoOnAt(std::uint64_t position) {
  if (position >= m_streamLength) return true;
  const auto header = ParseElementHeader(m_window.From(position, ElementHeader::kMaxBytes, kFirstChunk));
  return header && (m_ids.Contains(header->id) || header->id == element_ids::kVoid);
}

std::optional<FoundElement> ElementSearch::UpperBetween(std::uint64_t begin, std::uint64_t end) {
  for (std::uint64_t position = begin; position < end;) {
    const auto bytes = m_window.From(position, ElementHeader::kMaxBytes, kLargestChunk);
    if (bytes.empty()) break;
    // A head that the chunk cuts is looked at in the next one.
    const bool isLast = position + bytes.size() > m_streamLength;
    const std::size_t whole = isLast ? bytes.size() : bytes.size() - ElementHeader::kMaxBytes + 1;
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(whole, end - position));
    for (std::size_t offset = 0; offset < count; ++offset) {
      if (!BeginsLongId(bytes[offset])) continue;
      auto found = LookAt(position + offset, bytes.subspan(offset));
      if (found && found->upperLevel > 0) return found;
    }
    position += count;
  }
  return std::nullopt;
}

std::optional<FoundElement> ElementSearch::LookAt(std::uint64_t position, std::span<const std::uint8_t> bytes) {
  const auto header = ParseElementHeader(bytes);
  if (!header || !m_ids.Contains(header->id) || IsChecksum(*header)) return std::nullopt;
  return Create(position, *header);
}

std::optional<FoundElement> ElementSearch::Create(std::uint64_t position, const ElementHeader& header) const {
  // The largest sizes that libebml is to accept, in a stream and in a parent of unknown size.
  constexpr std::uint64_t kLargestInStream = 0xFFFFFFFF;
  const std::uint64_t noEnd = m_unknown == Unknown::kSkip ? limits::kElement : kLargestInStream;
  FoundElement found{nullptr, position, position + header.Length(), 0};
  found.element.reset(libebml::EbmlElement::FromHead(libebml::EbmlId(header.id, header.idLength), header.sizeLength,
                                                     header.size, header.sizeKnown, position, m_context,
                                                     found.upperLevel, m_end == kNoEnd ? noEnd : m_end - position));
  if (!found.element) return std::nullopt;
  return found;
}

// How far to go from a place where nothing known begins.
std::size_t ElementSearch::PassUnknown(std::uint64_t position, std::span<const std::uint8_t> bytes) const {
  constexpr std::uint8_t kSmallestFirstByte = 0x10;
  constexpr std::uint8_t kChecksum = 0xBF;
  if (bytes[0] < kSmallestFirstByte || (m_unknown == Unknown::kPassByteWise && bytes[0] != kChecksum)) return 1;
  const auto header = ParseElementHeader(bytes);
  if (!header) return 1;
  if (IsChecksum(*header)) return PassChecksum(position, *header);
  if (m_ids.Contains(header->id) || !IsSkippable(position, *header)) return 1;
  return header->Length() + static_cast<std::size_t>(header->size);
}

// Noise looks like element heads too. In a parent whose end is not known nothing would stop a search that follows such
// heads, so no step goes past an element that belongs further up.
std::size_t ElementSearch::WithoutHidden(std::uint64_t position, std::size_t step) {
  if (HasEnd() || m_unknown == Unknown::kPassByteWise) return step;
  const auto upper = UpperBetween(position + 1, std::min(position + step, m_streamLength));
  return upper ? static_cast<std::size_t>(upper->position - position) : step;
}

std::size_t ElementSearch::PassChecksum(std::uint64_t position, const ElementHeader& header) const {
  constexpr std::size_t kSize = 4;
  if (header.size != kSize || !IsSkippable(position, header)) return 1;
  // One that the end of the stream cuts is not skipped.
  const bool isWhole = position + header.Length() + kSize <= m_streamLength;
  return header.Length() + (isWhole ? kSize : 0);
}

bool ElementSearch::IsSkippable(std::uint64_t position, const ElementHeader& header) const {
  if (!header.sizeKnown || header.size >= limits::kElement) return false;
  return m_end == kNoEnd || header.Length() + header.size <= m_end - position;
}

}  // namespace tarvex
