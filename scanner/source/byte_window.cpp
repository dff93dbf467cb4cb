#include "scanner/source/byte_window.h"

#include <algorithm>

namespace tarvex {

std::span<const std::uint8_t> ByteWindow::From(std::uint64_t position, std::size_t atLeast, std::size_t chunk) {
  const std::uint64_t end = m_source.Length() + 1;
  if (position >= end) return {};
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(atLeast, end - position));
  if (const auto loaded = Loaded(position); loaded.size() >= wanted) return loaded;
  Load(position, wanted, std::max(wanted, chunk));
  return Loaded(position);
}

// A few bytes are copied, so that they stay when the source reads others. Many are borrowed from the source. Where that
// fails, only those that are needed are read: some of the others may not be readable at all.
void ByteWindow::Load(std::uint64_t position, std::size_t atLeast, std::size_t chunk) {
  constexpr std::size_t kMany = 32 * 1024;
  const std::uint64_t left = m_source.Length() - position;
  const bool isMany = chunk >= kMany && m_source.CanBorrow();
  m_size = 0;
  if (isMany && Borrow(position, atLeast, chunk)) return;
  const auto bytes = static_cast<std::size_t>(std::min<std::uint64_t>(isMany ? atLeast : chunk, left));
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

bool ByteWindow::Borrow(std::uint64_t position, std::size_t atLeast, std::size_t wanted) {
  m_borrowed.reset();
  if (atLeast > m_source.Length() - position) return false;  // with the zero that follows
  const auto bytes = m_source.Borrow(position, atLeast, wanted);
  if (bytes.empty()) return false;
  m_bytes = bytes.data();
  m_size = bytes.size();
  m_start = position;
  m_borrowed = m_source.BorrowNumber();
  return true;
}

// Not a vector, which would first zero the bytes that are read over at once.
void ByteWindow::MakeRoom(std::size_t size) {
  m_borrowed.reset();
  if (size <= m_capacity) return;
  m_own.reset(new std::uint8_t[size]);
  m_capacity = size;
}

}  // namespace tarvex
