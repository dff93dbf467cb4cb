#include "scanner/elements/plain_walk.h"

namespace tarvex {

std::optional<ElementHeader> PlainWalk::Head() {
  const auto header = ParseElementHeader(Bytes(ElementHeader::kMaxBytes));
  if (!header || !header->sizeKnown || header->size > m_end - m_position - header->Length()) return std::nullopt;
  return header;
}

std::span<const std::uint8_t> PlainWalk::Data(const ElementHeader& header, std::uint64_t count) {
  const std::uint64_t wanted = std::min(count, header.size);
  return BytesAt(m_position + header.Length(), wanted).first(static_cast<std::size_t>(wanted));
}

PlainWalk PlainWalk::Inside(const ElementHeader& header) const {
  const std::uint64_t begin = m_position + header.Length();
  return {m_walker, begin, begin + header.size, m_readTo, m_step};
}

void PlainWalk::Pass(const ElementHeader& header) {
  const std::uint64_t length = header.Length() + header.size;
  m_step.Note(length);
  m_position += length;
}

std::span<const std::uint8_t> PlainWalk::BytesAt(std::uint64_t position, std::uint64_t atLeast) {
  const std::uint64_t left = m_end - position;
  const std::uint64_t chunk = std::min<std::uint64_t>(m_step.Bytes(), m_readTo - position);
  const auto bytes =
      m_walker.Bytes(position, static_cast<std::size_t>(std::min(atLeast, left)), static_cast<std::size_t>(chunk));
  return bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left)));
}

}  // namespace tarvex
