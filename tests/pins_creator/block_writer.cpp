// Expected media types and their comparison.
#include "tests/pins_creator/block_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace tarvex::test {

namespace {

std::string GuidText(const GUID& guid) {
  std::array<char, 37> text{};
  std::snprintf(text.data(), text.size(), "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
                static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2],
                guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
  return text.data();
}

}  // namespace

Block& Block::Put(std::size_t offset, std::uint64_t value, unsigned width) {
  for (unsigned i = 0; i < width; ++i) m_bytes.at(offset + i) = static_cast<std::uint8_t>(value >> 8 * i);
  return *this;
}

Block& Block::Data(std::size_t offset, const ByteVector& bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) m_bytes.at(offset + i) = bytes[i];
  return *this;
}

Block& Block::Text(std::size_t offset, const std::string& text) {
  return Data(offset, ByteVector(text.begin(), text.end()));
}

std::string Hex(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i % 16 == 0) text += '\n';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
    text += ' ';
  }
  return text;
}

void ExpectType(const CMediaType& type, const Expected& expected) {
  EXPECT_EQ(GuidText(type.majortype), expected.major);
  EXPECT_EQ(GuidText(type.subtype), expected.subtype);
  EXPECT_EQ(GuidText(type.formattype), expected.format);
  EXPECT_EQ(type.bFixedSizeSamples != FALSE, expected.fixedSize);
  EXPECT_EQ(type.bTemporalCompression != FALSE, expected.temporal);
  EXPECT_EQ(type.lSampleSize, 1u);
  EXPECT_EQ(type.pUnk, nullptr);
  EXPECT_EQ(type.cbFormat, expected.block.size());
  EXPECT_EQ(Hex(type.FormatBytes()), Hex(expected.block));
  EXPECT_EQ(type.pbFormat == nullptr, expected.block.empty());
}

}  // namespace tarvex::test
