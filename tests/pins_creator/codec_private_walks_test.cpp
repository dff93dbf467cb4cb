// The walks over codec private data: what they find, and that damaged data never leads outside.
#include <gtest/gtest.h>

#include <memory>

#include "pins/creator/avcc.h"
#include "pins/creator/bitmap_header.h"
#include "pins/creator/track_elements.h"
#include "pins/creator/xiph_lacing.h"
#include "tests/pins_creator/block_writer.h"

namespace tarvex::test {
namespace {

constexpr char kTooShort[] = "KaxCodecPrivate is too short";

// The first bytes in memory of their own, so that a read behind them is seen.
template <class Walk>
std::string WalkFirst(const ByteVector& bytes, std::size_t count, Walk walk) {
  const auto copy = std::make_unique<std::uint8_t[]>(count);
  std::copy_n(bytes.begin(), count, copy.get());
  return ThrownBy([&] { walk(std::span<const std::uint8_t>(copy.get(), count)); });
}

TEST(Avcc, SeveralSetsAndTrailingBytes) {
  const ByteVector record = {1, 0x4D, 0x40, 0x29, 0xFD, 0xE2, 0,    1, 0xAA, 0,    0,   3,
                             0, 1,    0xBB, 0,    2,    0xCC, 0xCD, 0, 0,    0xFD, 0xF8};
  const AvccRecord read = ReadAvcc(record);
  EXPECT_EQ(read.profile, 0x4D);
  EXPECT_EQ(read.level, 0x29);
  EXPECT_EQ(read.nalLengthSize, 2);
  EXPECT_EQ(Hex(read.sequenceSets), Hex(ByteVector{0, 1, 0xAA, 0, 0}));
  EXPECT_EQ(Hex(read.pictureSets), Hex(ByteVector{0, 1, 0xBB, 0, 2, 0xCC, 0xCD, 0, 0}));
}

TEST(Avcc, CutAnywhereIsRefused) {
  const ByteVector record = {1, 0x64, 0, 0x1F, 0xFF, 0xE2, 0, 3, 1, 2, 3, 0, 1, 9, 2, 0, 2, 5, 6, 0, 1, 7};
  for (std::size_t count = 0; count < record.size(); ++count) {
    EXPECT_EQ(WalkFirst(record, count, ReadAvcc), kTooShort) << count;
  }
  EXPECT_EQ(WalkFirst(record, record.size(), ReadAvcc), "nothing thrown");
}

TEST(Avcc, LengthsThatReachOutsideAreRefused) {
  EXPECT_EQ(WalkFirst({1, 2, 3, 4, 5, 31, 0xFF, 0xFF, 0, 0}, 10, ReadAvcc), kTooShort);
  EXPECT_EQ(WalkFirst({1, 2, 3, 4, 5, 0, 0xFF, 0, 0}, 9, ReadAvcc), kTooShort);
}

// Sizes 1 and 300, and 4 bytes left.
ByteVector LacedPackets() {
  ByteVector bytes = {2, 1, 255, 45};
  bytes.insert(bytes.end(), 305, 0x5A);
  return bytes;
}

TEST(XiphLacing, SizesOfSeveralBytesAndTheRest) {
  const ByteVector bytes = LacedPackets();
  const auto packets = ReadXiphLacing(bytes);
  ASSERT_EQ(packets.size(), 3u);
  EXPECT_EQ(packets[0].size(), 1u);
  EXPECT_EQ(packets[1].size(), 300u);
  EXPECT_EQ(packets[2].size(), 4u);
  EXPECT_EQ(packets[0].data(), bytes.data() + 4);
}

TEST(XiphLacing, CutAnywhereIsRefusedOrShortensTheLast) {
  const ByteVector bytes = LacedPackets();
  for (std::size_t count = 0; count <= bytes.size(); ++count) {
    EXPECT_EQ(WalkFirst(bytes, count, ReadXiphLacing), count < 305 ? kTooShort : "nothing thrown") << count;
  }
}

TEST(XiphLacing, EmptyPacketsAndNoSizes) {
  const ByteVector empties = {2, 0, 0};
  EXPECT_EQ(ReadXiphLacing(empties).size(), 3u);
  const ByteVector single = {0, 7, 8};
  ASSERT_EQ(ReadXiphLacing(single).size(), 1u);
  EXPECT_EQ(ReadXiphLacing(single)[0].size(), 2u);
}

TEST(XiphLacing, EndlessSizeIsRefused) { EXPECT_EQ(WalkFirst(ByteVector(5000, 255), 5000, ReadXiphLacing), kTooShort); }

TEST(BitmapHeader, NeedsFortyBytes) {
  for (std::size_t count = 0; count <= 41; ++count) {
    EXPECT_EQ(WalkFirst(CountingBytes(41), count, ReadBitmapHeader), count < 40 ? kTooShort : "nothing thrown");
  }
}

TEST(BitmapHeader, GivesWhatFollows) {
  const ByteVector bytes = CountingBytes(43);
  const BitmapDescription bitmap = ReadBitmapHeader(bytes);
  EXPECT_EQ(bitmap.header.biWidth, 0x07060504);
  EXPECT_EQ(Hex(bitmap.extra), Hex(ByteVector{40, 41, 42}));
}

TEST(FormatBlock, SizeThatDoesNotFitIsRefused) {
  EXPECT_EQ(FormatBlockSize(132, 0xFFFFFFFF - 132), 0xFFFFFFFFu);
  EXPECT_EQ(ThrownBy([] { FormatBlockSize(132, 0xFFFFFFFF - 131); }), "KaxCodecPrivate is too large");
  EXPECT_EQ(ThrownBy([] { FormatBlockSize(18, ~std::uint64_t{0}); }), "KaxCodecPrivate is too large");
}

}  // namespace
}  // namespace tarvex::test
