// libebml's reading interface over bytes at hand, on the stack of whoever shows them; runs on that thread.
#pragma once

#include <ebml/IOCallback.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace tarvex {

/// Shows libebml these bytes and nothing behind them: a read of more than are left gives nothing.
class ByteInput : public libebml::IOCallback {
 public:
  /// `position` is that of the first byte in the stream. The bytes are not copied.
  ByteInput(std::uint64_t position, std::span<const std::uint8_t> bytes) : m_position(position), m_bytes(bytes) {}

  std::uint32_t read(void* buffer, std::size_t size) override {
    if (size > m_bytes.size()) return 0;
    if (size != 0) std::memcpy(buffer, m_bytes.data(), size);
    m_bytes = m_bytes.subspan(size);
    m_position += size;
    return static_cast<std::uint32_t>(size);
  }
  void setFilePointer(std::int64_t /*offset*/, libebml::seek_mode /*mode*/) override {}
  std::size_t write(const void* /*buffer*/, std::size_t /*size*/) override { return 0; }
  std::uint64_t getFilePointer() override { return m_position; }
  void close() override {}

 private:
  std::uint64_t m_position;
  std::span<const std::uint8_t> m_bytes;
};

}  // namespace tarvex
