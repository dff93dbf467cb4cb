// Delivery: its ends before the data's end, and durations. What well-made blocks deliver is the corpus's matter.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

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
  const ByteString group =
      Element(id::kBlockGroup, Join({Element(id::kBlock, BlockData(1, 1, 0, {1})), SimpleBlock(1, 5, Noise(40, 3))}));
  OpenFile file(FileOf(Cluster(0, Join({group, SimpleBlock(1, 9, {9})}))));
  EXPECT_FALSE(file.Process());
  EXPECT_EQ(file.StartTimes(), (std::vector<std::int64_t>{10000, 50000, 90000}));
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

}  // namespace
}  // namespace tarvex::test
