#include "scanner/byte_window.h"

#include <algorithm>

namespace tarvex {

std::span<const std::uint8_t> CByteWindow::From(std::uint64_t position, std::size_t atLeast, std::size_t chunk) {
  const std::uint64_t end = m_source.Length() + 1;
  if (position >= end) return {};
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(atLeast, end - position));
  const bool inside =
      position >= m_start && position - m_start <= m_bytes.size() && wanted <= m_bytes.size() - (position - m_start);
  if (!inside) Load(position, std::max(wanted, chunk));
  return std::span<const std::uint8_t>(m_bytes).subspan(static_cast<std::size_t>(position - m_start));
}

void CByteWindow::Load(std::uint64_t position, std::size_t chunk) {
  const std::uint64_t left = m_source.Length() - position;
  const auto bytes = static_cast<std::size_t>(std::min<std::uint64_t>(chunk, left));
  m_bytes.resize(bytes);
  m_start = position;
  if (bytes != 0) {
    m_source.setFilePointer(static_cast<std::int64_t>(position));
    m_source.read(m_bytes.data(), bytes);
  }
  if (bytes == left) m_bytes.push_back(0);
}

}  // namespace tarvex
