// The walks over codec private data: what they find, and that damaged data never leads outside.
#include <gtest/gtest.h>

#include <memory>
#include <optional>

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

// Sizes of the packets among the first bytes; nothing when the lacing is damaged.
std::optional<std::vector<std::size_t>> PacketSizes(const ByteVector& bytes, std::size_t count) {
  std::optional<std::vector<std::size_t>> sizes;
  WalkFirst(bytes, count, [&](std::span<const std::uint8_t> first) {
    const auto packets = ReadXiphLacing(first);
    if (!packets) return;
    sizes.emplace();
    for (const auto packet : *packets) sizes->push_back(packet.size());
  });
  return sizes;
}

std::optional<std::vector<std::size_t>> PacketSizes(const ByteVector& bytes) {
  return PacketSizes(bytes, bytes.size());
}

using Sizes = std::vector<std::size_t>;

TEST(XiphLacing, SizesOfSeveralBytesAndTheRest) {
  const ByteVector bytes = LacedPackets();
  EXPECT_EQ(PacketSizes(bytes), (Sizes{1, 300, 4}));
  EXPECT_EQ(ReadXiphLacing(bytes)->front().data(), bytes.data() + 4);
}

TEST(XiphLacing, CutAnywhereIsDamageOrShortensTheLast) {
  const ByteVector bytes = LacedPackets();
  for (std::size_t count = 0; count <= bytes.size(); ++count) {
    const auto sizes = PacketSizes(bytes, count);
    ASSERT_EQ(sizes.has_value(), count >= 305) << count;
    if (sizes) {
      EXPECT_EQ(*sizes, (Sizes{1, 300, count - 305}));
    }
  }
}

TEST(XiphLacing, EmptyPacketsAndNoSizes) {
  EXPECT_EQ(PacketSizes({2, 0, 0}), (Sizes{0, 0, 0}));
  EXPECT_EQ(PacketSizes({0, 7, 8}), Sizes{2});
  EXPECT_EQ(PacketSizes({1, 255, 0}), std::nullopt);
}

TEST(XiphLacing, EndlessSizeIsDamage) { EXPECT_EQ(PacketSizes(ByteVector(5000, 255)), std::nullopt); }

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
