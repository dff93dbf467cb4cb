#include "scanner/byte_window.h"

#include <algorithm>

namespace tarvex {

std::span<const std::uint8_t> CByteWindow::From(std::uint64_t position, std::size_t atLeast, std::size_t chunk) {
  const std::uint64_t end = m_source.Length() + 1;
  if (position >= end) return {};
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(atLeast, end - position));
  if (!Loaded(position, wanted)) Load(position, std::max(wanted, chunk));
  return std::span(m_bytes.get(), m_size).subspan(static_cast<std::size_t>(position - m_start));
}

std::optional<std::span<const std::uint8_t>> CByteWindow::Loaded(std::uint64_t position, std::uint64_t size) const {
  if (position < m_start || position - m_start > m_size || size > m_size - (position - m_start)) return std::nullopt;
  return std::span(m_bytes.get() + (position - m_start), static_cast<std::size_t>(size));
}

void CByteWindow::Load(std::uint64_t position, std::size_t size) {
  const std::uint64_t left = m_source.Length() - position;
  const auto bytes = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
  m_size = 0;
  MakeRoom(bytes + 1);
  if (bytes != 0) {
    m_source.setFilePointer(static_cast<std::int64_t>(position));
    m_source.read(m_bytes.get(), bytes);
  }
  m_start = position;
  m_size = bytes;
  if (bytes == left) m_bytes[m_size++] = 0;
}

// Not a vector, which would write to bytes that are read over at once.
void CByteWindow::MakeRoom(std::size_t size) {
  if (size <= m_capacity) return;
  m_bytes.reset(new std::uint8_t[size]);
  m_capacity = size;
}

}  // namespace tarvex
