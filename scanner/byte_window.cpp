#include "scanner/byte_window.h"

#include <algorithm>

namespace tarvex {

std::span<const std::uint8_t> CByteWindow::From(std::uint64_t position, std::size_t atLeast, std::size_t chunk) {
  const std::uint64_t end = m_source.Length() + 1;
  if (position >= end) return {};
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(atLeast, end - position));
  if (!Loaded(position, wanted)) Load(position, std::max(wanted, chunk));
  return std::span(m_bytes, m_size).subspan(static_cast<std::size_t>(position - m_start));
}

std::optional<std::span<const std::uint8_t>> CByteWindow::Loaded(std::uint64_t position, std::uint64_t size) const {
  if (m_borrowed && *m_borrowed != m_source.BorrowNumber()) return std::nullopt;
  if (position < m_start || position - m_start > m_size || size > m_size - (position - m_start)) return std::nullopt;
  return std::span(m_bytes + (position - m_start), static_cast<std::size_t>(size));
}

void CByteWindow::Load(std::uint64_t position, std::size_t size) {
  const std::uint64_t left = m_source.Length() - position;
  const auto bytes = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
  m_size = 0;
  if (bytes < left && Borrow(position, bytes)) return;
  MakeRoom(bytes + 1);
  if (bytes != 0) {
    m_source.setFilePointer(static_cast<std::int64_t>(position));
    m_source.read(m_own.get(), bytes);
  }
  m_bytes = m_own.get();
  m_start = position;
  m_size = bytes;
  if (bytes == left) m_own[m_size++] = 0;
}

// Few bytes are copied, so that they stay when the source reads others.
bool CByteWindow::Borrow(std::uint64_t position, std::size_t size) {
  constexpr std::size_t kMany = 32 * 1024;
  m_borrowed.reset();
  if (size < kMany) return false;
  m_bytes = m_source.Borrow(position, size);
  if (m_bytes == nullptr) return false;
  m_borrowed = m_source.BorrowNumber();
  m_start = position;
  m_size = size;
  return true;
}

// Not a vector, which would write to bytes that are read over at once.
void CByteWindow::MakeRoom(std::size_t size) {
  m_borrowed.reset();
  if (size <= m_capacity) return;
  m_own.reset(new std::uint8_t[size]);
  m_capacity = size;
}

}  // namespace tarvex
