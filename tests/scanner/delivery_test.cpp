// Delivery where the data ends early or is damaged. What well-made blocks deliver is the corpus's matter.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

TEST(Delivery, BlockFoundInsideADamagedGroupIsReadFromItsOwnBytes) {
  const ByteString group =
      Element(id::kBlockGroup, Join({Element(id::kBlock, BlockData(1, 1, 0, {1})), SimpleBlock(1, 5, Noise(40, 3))}));
  OpenFile file(FileOf(Cluster(0, Join({group, SimpleBlock(1, 9, {9})}))));
  EXPECT_FALSE(file.scanner.Process());
  EXPECT_EQ(file.frames, (std::vector<RecordedFrame>{{10000, {1}}, {50000, Noise(40, 3)}, {90000, {9}}}));
}

TEST(Delivery, DurationIsCutAndNonsenseCountsAsAbsent) {
  const std::pair<double, std::uint64_t> durations[] = {
      {0.0000099, 0}, {1e15, 10000000000000000000U}, {1e300, ~std::uint64_t{0}}, {std::nan(""), 0}, {INFINITY, 0},
      {-1.0, 0}};
  for (const auto& [ticks, expected] : durations) {
    const OpenFile file(MatroskaFile(Element(id::kInfo, Float(id::kDuration, ticks))));
    EXPECT_EQ(file.scanner.Duration(), expected) << ticks;
  }
}

// What lies in front of a place that cannot be read is delivered, and few reads are made to find that out.
TEST(Delivery, FramesInFrontOfAFailedReadArrive) {
  const ByteString block = SimpleBlock(1, 0, Noise(997, 1));
  constexpr std::size_t kBlocks = 1500;
  const ByteString blocks = Repeat(block, kBlocks);
  for (const ByteString& cluster : {Cluster(0, blocks), ElementOfUnknownSize(id::kCluster, blocks)}) {
    for (const std::size_t whole : {std::size_t{10}, std::size_t{60}, std::size_t{1300}}) {
      OpenFile file(FileOf(cluster));
      const std::size_t end = file.reader.bytes.size() - (kBlocks - whole) * block.size();
      file.reader.brokenFrom = static_cast<LONGLONG>(end + block.size() / 2);
      EXPECT_THROW(file.scanner.Process(), MessageError);
      EXPECT_EQ(file.frames.size(), whole);
      EXPECT_LE(file.reader.brokenReads, 8);
    }
  }
}

}  // namespace
}  // namespace tarvex::test
