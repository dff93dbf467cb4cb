// Puts numbers into a format block at published offsets, little-endian. A value of one test.
#pragma once

#include <cstdint>
#include <vector>

#include "tests/support/digest.h"

namespace tarvex::test {

class BlockWriter {
 public:
  /// A block of zeros.
  explicit BlockWriter(std::size_t size) : m_bytes(size) {}

  BlockWriter& U16(std::size_t offset, std::uint64_t value) { return Put(offset, value, 2); }
  BlockWriter& U32(std::size_t offset, std::uint64_t value) { return Put(offset, value, 4); }
  BlockWriter& U64(std::size_t offset, std::uint64_t value) { return Put(offset, value, 8); }
  BlockWriter& Copy(std::size_t offset, Bytes bytes) {
    for (std::size_t k = 0; k < bytes.size(); ++k) m_bytes.at(offset + k) = bytes[k];
    return *this;
  }

  std::vector<std::uint8_t> Take() { return std::move(m_bytes); }

 private:
  BlockWriter& Put(std::size_t offset, std::uint64_t value, std::size_t width) {
    for (std::size_t k = 0; k < width; ++k) m_bytes.at(offset + k) = static_cast<std::uint8_t>(value >> (8 * k));
    return *this;
  }

  std::vector<std::uint8_t> m_bytes;
};

}  // namespace tarvex::test
