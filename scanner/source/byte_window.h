// A view of the stream's bytes for looking at many positions in a row. Used on the thread that drives
// the scanner; moves the byte source's position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "scanner/source/async_callback.h"

namespace tarvex {

class ByteWindow {
 public:
  explicit ByteWindow(CAsyncCallback& source) : m_source(source) {}

  /// The bytes from `position` on: at least `atLeast` of them, unless the stream ends before. If they have to be read,
  /// up to `chunk` bytes are. One zero byte counts as following the stream, as the byte source gives it. Valid until
  /// bytes are read again.
  std::span<const std::uint8_t> From(std::uint64_t position, std::size_t atLeast, std::size_t chunk);

  /// The bytes from `position` on that are in the window; reads nothing. Valid as long as From's.
  std::span<const std::uint8_t> Loaded(std::uint64_t position) const {
    const bool isGone = m_borrowed && *m_borrowed != m_source.BorrowNumber();
    if (isGone || position < m_start || position - m_start > m_size) return {};
    return {m_bytes + (position - m_start), m_size - static_cast<std::size_t>(position - m_start)};
  }

  /// Forgets what was read: the stream may be another one by now.
  void Clear() { m_size = 0; }

 private:
  void Load(std::uint64_t position, std::size_t atLeast, std::size_t chunk);
  void MakeRoom(std::size_t size);
  bool Borrow(std::uint64_t position, std::size_t atLeast, std::size_t wanted);

  CAsyncCallback& m_source;
  std::unique_ptr<std::uint8_t[]> m_own;
  std::size_t m_capacity = 0;               // of our own memory
  const std::uint8_t* m_bytes = nullptr;    // there, or borrowed from the source
  std::optional<std::uint64_t> m_borrowed;  // the source's number for that
  std::size_t m_size = 0;                   // bytes that are there
  std::uint64_t m_start = 0;                // stream position of the first
};

}  // namespace tarvex
