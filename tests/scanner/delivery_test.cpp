// Delivery: its ends before the data's end, times at the edges, and blocks that do not fit. What well-made
// blocks deliver is the corpus's matter.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "scanner/block_time.h"
#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

using Times = std::vector<std::int64_t>;

ByteString Group(std::initializer_list<ByteString> children) { return Element(id::kBlockGroup, Join(children)); }

ByteString Block(std::int16_t time, const ByteString& rest) { return Element(id::kBlock, BlockData(1, time, 0, rest)); }

TEST(Delivery, TimesAreExactAtTheEdges) {
  EXPECT_EQ(BlockUnits(17179869184000000000U, 0, 1000000000), 171798691840000000U);
  EXPECT_EQ(BlockUnits(17179869184000000000U, -1, 1000000000), 171798691830000000U);
  EXPECT_EQ(BlockUnits(0, std::numeric_limits<std::int16_t>::min(), 1000000),
            static_cast<std::uint64_t>(std::int64_t{-327680000}));
  EXPECT_EQ(BlockUnits(10 * 1999, -11, 1999), static_cast<std::uint64_t>(std::int64_t{-19})) << "cut toward zero";
  EXPECT_EQ(BlockUnits(199, 0, 1), 1U);
  EXPECT_EQ(BlockUnits(1000, -5, 0), 10U);
}

TEST(Delivery, DurationIsCutAndNonsenseCountsAsAbsent) {
  const struct {
    double ticks;
    std::uint64_t scale;
    std::uint64_t expected;
  } cases[] = {
      {5000.0, 1000000, 50000000},
      {0.99, 100, 0},
      {1e19, 100, 10000000000000000000U},
      {1e300, 1000000, std::numeric_limits<std::uint64_t>::max()},
      {std::nan(""), 1000000, 0},
      {std::numeric_limits<double>::infinity(), 1000000, 0},
      {-1.0, 1000000, 0},
      {5000.0, 0, 0},
  };
  for (const auto& [ticks, scale, expected] : cases) {
    const ByteString info = Join({Unsigned(id::kTimecodeScale, scale), Float(id::kDuration, ticks)});
    EXPECT_EQ(OpenFile(MatroskaFile(Element(id::kInfo, info))).scanner.Duration(), expected) << ticks << " " << scale;
  }
}

TEST(Delivery, PendingEventStopsBeforeTheNextChild) {
  const ByteString bytes = FileOf(Cluster(300, Join({SimpleBlock(1, 0, {1}), SimpleBlock(1, 1, {1})})));
  for (std::int64_t answered = 0; answered < 3; ++answered) {
    OpenFile file(bytes);
    file.callback.eventAfter = answered;
    EXPECT_TRUE(file.Process());
    EXPECT_EQ(file.callback.frames.size(), static_cast<std::size_t>(std::max<std::int64_t>(answered - 1, 0)));
  }
}

TEST(Delivery, BlockFoundInsideADamagedGroupIsReadFromItsOwnBytes) {
  const ByteString group = Group({Block(1, {1}), SimpleBlock(1, 5, Noise(40, 3))});
  OpenFile file(FileOf(Cluster(0, Join({group, SimpleBlock(1, 9, {9})}))));
  EXPECT_FALSE(file.Process());
  EXPECT_EQ(file.StartTimes(), (Times{10000, 50000, 90000}));
  EXPECT_EQ(file.callback.frames[1].data, Noise(40, 3));
}

// What lies in front of a place that cannot be read is delivered, and few reads are made to find that out.
TEST(Delivery, FramesInFrontOfAFailedReadArrive) {
  const ByteString block = SimpleBlock(1, 0, Noise(997, 1));
  constexpr std::size_t kBlocks = 1500;
  const ByteString blocks = Repeat(block, kBlocks);
  for (const ByteString& cluster : {Cluster(0, blocks), ElementOfUnknownSize(id::kCluster, blocks)}) {
    for (const std::size_t whole : {std::size_t{10}, std::size_t{60}, std::size_t{1300}}) {
      OpenFile file(FileOf(cluster), OpenFile::Reading::kAhead);
      const std::size_t end = file.reader.bytes.size() - (kBlocks - whole) * block.size();
      file.reader.brokenFrom = static_cast<LONGLONG>(end + block.size() / 2);
      EXPECT_NE(MessageOf([&] { file.Process(); }), "");
      EXPECT_EQ(file.callback.frames.size(), whole);
      EXPECT_LE(file.reader.brokenReads, 8);
    }
  }
}

constexpr std::uint8_t kXiph = 0x02;
constexpr std::uint8_t kFixed = 0x04;
constexpr std::uint8_t kEbml = 0x06;

ByteString RawLace(std::uint8_t flags, const ByteString& lace) { return BlockData(1, 0, flags, lace); }

TEST(Delivery, BlocksThatDoNotFitAreDroppedAlone) {
  const ByteString data = Noise(20, 1);
  const ByteString bad[] = {
      {},                                                  // nothing
      {0x81},                                              // no time
      {0x81, 0, 0},                                        // no flags
      {0x10, 1, 1, 0},                                     // a track number that is cut off
      {0x00, 0, 0, 0, 0},                                  // no track number
      BlockData((std::uint64_t{1} << 32) + 1, 0, 0, {1}),  // would pass for track 1 in 32 bits
      RawLace(kXiph, {}),                                  // no count
      RawLace(kXiph, {3}),                                 // no sizes
      RawLace(kXiph, Join({{1}, {21}, data})),             // one byte more than there is
      RawLace(kXiph, Join({{2}, {15, 15}, data})),         // together more than there is
      RawLace(kXiph, Join({{1}, Repeat({255}, 1000)})),    // sizes and nothing else
      RawLace(kFixed, Join({{2}, data})),                  // 20 bytes for 3 frames
      RawLace(kEbml, {2}),                                 // no sizes
      RawLace(kEbml, Join({{1}, {0}, data})),              // no number
      RawLace(kEbml, Join({{1}, Vint(21), data})),         // more than there is
      RawLace(kEbml, Join({{2}, Vint(2), {0x80}, data})),  // less than nothing
      RawLace(kEbml, Join({{2}, Vint(1), Vint((std::uint64_t{1} << 56) - 2, 8), data})),
  };
  for (const ByteString& block : bad) {
    // Zeros between them, since of the first few not even the end is believed.
    const ByteString blocks = Join({Element(id::kSimpleBlock, block), Zeros(4), SimpleBlock(1, 7, {9})});
    OpenFile file(FileOf(Cluster(0, blocks)));
    EXPECT_FALSE(file.Process());
    EXPECT_EQ(file.StartTimes(), (Times{70000})) << "block " << &block - bad;
  }
}

}  // namespace
}  // namespace tarvex::test
