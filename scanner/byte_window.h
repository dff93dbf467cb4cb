// A view of the stream's bytes for looking at many positions in a row. Used on the thread that drives
// the scanner; moves the byte source's position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "scanner/async_callback.h"

namespace tarvex {

class CByteWindow {
 public:
  explicit CByteWindow(CAsyncCallback& source) : m_source(source) {}

  /// The bytes from `position` on: at least `atLeast` of them, unless the stream ends before. When they
  /// have to be read, `chunk` are. One zero byte counts as following the stream, as the byte source gives
  /// it. Valid until the next call.
  std::span<const std::uint8_t> From(std::uint64_t position, std::size_t atLeast, std::size_t chunk);

  /// Forgets what was read: the stream may be another one by now.
  void Clear() { m_bytes.clear(); }

 private:
  void Load(std::uint64_t position, std::size_t chunk);

  CAsyncCallback& m_source;
  std::vector<std::uint8_t> m_bytes;
  std::uint64_t m_start = 0;  // stream position of the first
};

}  // namespace tarvex
