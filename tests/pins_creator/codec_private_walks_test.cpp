// The walks over codec private data: what they find, and that damaged data never leads outside.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "framework/message_error.h"
#include "pins/creator/track_elements.h"
#include "pins/formats/avcc.h"
#include "pins/formats/bitmap_header.h"
#include "pins/formats/xiph_lacing.h"

namespace tarvex::test {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Sizes = std::vector<std::size_t>;

constexpr char kTooShort[] = "KaxCodecPrivate is too short";

/// The text of the MessageError that `action` throws, or nothing of one.
template <class Action>
std::string ThrownBy(Action action) {
  try {
    action();
  } catch (const MessageError& error) {
    return error.what();
  }
  return {};
}

// The first bytes in memory of their own, so that a read behind them is seen.
template <class Walk>
std::string WalkFirst(const Bytes& bytes, std::size_t count, Walk walk) {
  const auto copy = std::make_unique<std::uint8_t[]>(count);
  std::copy_n(bytes.begin(), count, copy.get());
  return ThrownBy([&] { walk(std::span<const std::uint8_t>(copy.get(), count)); });
}

TEST(Avcc, CutAnywhereOrReachingOutsideIsRefused) {
  const Bytes record = {1, 0x64, 0, 0x1F, 0xFF, 0xE2, 0, 3, 1, 2, 3, 0, 1, 9, 2, 0, 2, 5, 6, 0, 1, 7};
  for (std::size_t count = 0; count <= record.size(); ++count) {
    EXPECT_EQ(WalkFirst(record, count, ReadAvcc), count < record.size() ? kTooShort : "") << count;
  }
  EXPECT_EQ(WalkFirst({1, 2, 3, 4, 5, 31, 0xFF, 0xFF, 0, 0}, 10, ReadAvcc), kTooShort);
  EXPECT_EQ(WalkFirst({1, 2, 3, 4, 5, 0, 0xFF, 0, 0}, 9, ReadAvcc), kTooShort);
}

// Sizes of the packets among the first bytes; nothing when the lacing is damaged.
std::optional<Sizes> PacketSizes(const Bytes& bytes, std::size_t count) {
  std::optional<Sizes> sizes;
  WalkFirst(bytes, count, [&](std::span<const std::uint8_t> first) {
    const auto packets = ReadXiphLacing(first);
    if (!packets) return;
    sizes.emplace();
    for (const auto packet : *packets) sizes->push_back(packet.size());
  });
  return sizes;
}

TEST(XiphLacing, CutAnywhereIsDamageOrShortensTheLast) {
  Bytes bytes = {2, 1, 255, 45};  // sizes 1 and 300, and 4 bytes left
  bytes.insert(bytes.end(), 305, 0x5A);
  for (std::size_t count = 0; count <= bytes.size(); ++count) {
    const auto expected = count < 305 ? std::nullopt : std::optional(Sizes{1, 300, count - 305});
    EXPECT_EQ(PacketSizes(bytes, count), expected) << count;
  }
  EXPECT_EQ(PacketSizes({2, 0, 0}, 3), (Sizes{0, 0, 0}));
  EXPECT_EQ(PacketSizes({0, 7, 8}, 3), Sizes{2});
  EXPECT_EQ(PacketSizes({1, 255, 0}, 3), std::nullopt);
  EXPECT_EQ(PacketSizes(Bytes(5000, 255), 5000), std::nullopt);
}

TEST(FormatBlock, NeedsAWholeBitmapHeaderAndASizeThatFits) {
  EXPECT_EQ(WalkFirst(Bytes(41), 39, ReadBitmapHeader), kTooShort);
  EXPECT_EQ(WalkFirst(Bytes(41), 40, ReadBitmapHeader), "");
  EXPECT_EQ(FormatBlockSize(132, 0xFFFFFFFF - 132), 0xFFFFFFFFu);
  for (const std::uint64_t size : {std::uint64_t{0xFFFFFFFF} - 131, ~std::uint64_t{0}}) {
    EXPECT_EQ(ThrownBy([size] { FormatBlockSize(132, size); }), "KaxCodecPrivate is too large");
  }
}

}  // namespace
}  // namespace tarvex::test
