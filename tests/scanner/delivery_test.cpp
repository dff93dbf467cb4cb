#include <gtest/gtest.h>

#include <limits>

#include "framework/message_error.h"
#include "scanner/block_time.h"
#include "scanner/cluster_delivery.h"
#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

using Times = std::vector<std::int64_t>;

ByteString Group(std::initializer_list<ByteString> children) { return Element(id::kBlockGroup, Join(children)); }

ByteString Block(std::int16_t time, const ByteString& rest, std::uint8_t flags = 0) {
  return Element(id::kBlock, BlockData(1, time, flags, rest));
}

ByteString HeadersWithFrameDuration(std::uint64_t nanoseconds) {
  return Headers(2, Unsigned(id::kDefaultDuration, nanoseconds));
}

ByteString HeadersWithScale(std::uint64_t scale) {
  return Join({Element(id::kInfo, Unsigned(id::kTimecodeScale, scale)), Element(id::kTracks, TrackEntry(1, 2, "A"))});
}

TEST(Delivery, LacedFramesFollowEachOtherByTheDefaultDuration) {
  const ByteString block = LacedBlock(1, 10, Lacing::kXiph, {{1}, {2, 2}, {3, 3, 3}});
  OpenFile file(FileOf(Cluster(1000, block), HeadersWithFrameDuration(40000000)));
  EXPECT_FALSE(file.Process());
  EXPECT_EQ(file.StartTimes(), (Times{10100000, 10500000, 10900000}));
  for (const RecordedFrame& frame : file.callback.frames) {
    EXPECT_EQ(frame.duration, 400000);
    EXPECT_EQ(frame.track, 1U);
    EXPECT_TRUE(frame.key);
  }
}

TEST(Delivery, WithoutAnyDurationLacedFramesShareTheirTime) {
  OpenFile file(FileOf(Cluster(0, LacedBlock(1, 5, Lacing::kXiph, {{1}, {2}}))));
  file.Process();
  EXPECT_EQ(file.StartTimes(), (Times{50000, 50000}));
  EXPECT_EQ(file.callback.frames[0].duration, 0);
}

TEST(Delivery, BlockDurationGoesWholeToEveryLacedFrame) {
  const auto lacing = static_cast<std::uint8_t>(Lacing::kXiph);
  const ByteString group =
      Group({Block(0, Lace(Lacing::kXiph, {{1}, {2}}), lacing), Unsigned(id::kBlockDuration, 120)});
  OpenFile file(FileOf(Cluster(0, group), HeadersWithFrameDuration(40000000)));
  file.Process();
  EXPECT_EQ(file.StartTimes(), (Times{0, 1200000}));
  EXPECT_EQ(file.callback.frames[1].duration, 1200000);
}

TEST(Delivery, ZeroBlockDurationMeansTheDefault) {
  const ByteString group = Group({Block(0, {1}), Unsigned(id::kBlockDuration, 0)});
  OpenFile file(FileOf(Cluster(0, group), HeadersWithFrameDuration(40000000)));
  file.Process();
  EXPECT_EQ(file.callback.frames.at(0).duration, 400000);
}

TEST(Delivery, AnyReferenceMakesAGroupNoKeyFrame) {
  const ByteString groups = Join({Group({Block(0, {1})}), Group({Block(1, {1}), Signed(id::kReferenceBlock, -40)}),
                                  Group({Block(2, {1}), Signed(id::kReferenceBlock, 0)}),
                                  Group({Block(3, {1}), Signed(id::kReferenceBlock, 40)}),
                                  Group({Block(4, {1}), Element(id::kReferenceBlock, {})})});
  OpenFile file(FileOf(Cluster(0, groups)));
  file.Process();
  ASSERT_EQ(file.callback.frames.size(), 5U);
  for (std::size_t index = 0; index < 5; ++index) EXPECT_EQ(file.callback.frames[index].key, index == 0) << index;
}

TEST(Delivery, SimpleBlockSaysItselfWhetherItIsAKeyFrame) {
  OpenFile file(FileOf(Cluster(0, Join({SimpleBlock(1, 0, {1}, true), SimpleBlock(1, 1, {1}, false)}))));
  file.Process();
  EXPECT_TRUE(file.callback.frames.at(0).key);
  EXPECT_FALSE(file.callback.frames.at(1).key);
}

TEST(Delivery, GroupWithTwoBlocksGivesTheLaterAndOneWithoutGivesNone) {
  OpenFile file(FileOf(Cluster(100, Join({Group({Block(1, {1}), Block(2, {2})}), Group({})}))));
  EXPECT_FALSE(file.Process());
  EXPECT_EQ(file.StartTimes(), (Times{1020000}));
  EXPECT_EQ(file.callback.frames[0].data, ByteString{2});
}

TEST(Delivery, BlocksBeforeTheClusterTimeCountFromZero) {
  const ByteString cluster =
      Element(id::kCluster, Join({SimpleBlock(1, 7, {1}), Unsigned(id::kTimecode, 1000), SimpleBlock(1, 8, {1})}));
  OpenFile file(FileOf(Join({Cluster(500, {}), cluster})));
  file.Process();
  EXPECT_EQ(file.StartTimes(), (Times{70000, 10080000}));
}

TEST(Delivery, ClusterWithoutTimeCountsFromZero) {
  OpenFile file(FileOf(Element(id::kCluster, SimpleBlock(1, 7, {1}))));
  file.Process();
  EXPECT_EQ(file.StartTimes(), (Times{70000}));
}

TEST(Delivery, TimesBeforeZeroAreNegativeAndCutTowardZero) {
  OpenFile file(FileOf(Cluster(10, SimpleBlock(1, -11, {1})), HeadersWithScale(1999)));
  file.Process();
  EXPECT_EQ(file.StartTimes(), (Times{-19}));
}

TEST(Delivery, TimesAreExactAtTheEdges) {
  EXPECT_EQ(BlockUnits(17179869184000000000U, 0, 1000000000), 171798691840000000U);
  EXPECT_EQ(BlockUnits(17179869184000000000U, -1, 1000000000), 171798691830000000U);
  EXPECT_EQ(BlockUnits(0, std::numeric_limits<std::int16_t>::min(), 1000000),
            static_cast<std::uint64_t>(std::int64_t{-327680000}));
  EXPECT_EQ(BlockUnits(199, 0, 1), 1U);
  EXPECT_EQ(BlockUnits(1000, -5, 0), 10U);
}

TEST(Delivery, ScaleZeroPutsEverythingAtZero) {
  const ByteString group = Group({Block(3, {1}), Unsigned(id::kBlockDuration, 120)});
  OpenFile file(FileOf(Cluster(10, Join({SimpleBlock(1, -20, {1}), group})), HeadersWithScale(0)));
  file.scanner.BuildIndex();
  file.scanner.SetStartTime(1000);
  EXPECT_FALSE(file.Process());
  EXPECT_EQ(file.StartTimes(), (Times{0, 0}));
}

TEST(Delivery, BlocksOfUnknownTracksAreDelivered) {
  OpenFile file(FileOf(Cluster(0, SimpleBlock(99, 0, {1})), HeadersWithFrameDuration(40000000)));
  file.Process();
  EXPECT_EQ(file.callback.frames.at(0).track, 99U);
  EXPECT_EQ(file.callback.frames.at(0).duration, 0);
}

TEST(Delivery, WithoutClustersThePassEndsAtOnce) {
  OpenFile file(FileOf({}));
  EXPECT_FALSE(file.Process());
}

TEST(Delivery, EveryPassBeginsAnew) {
  OpenFile file(FileOf(Join({Cluster(0, SimpleBlock(1, 0, {1})), Cluster(1, SimpleBlock(1, 0, {1}))})));
  file.Process();
  file.Process();
  EXPECT_EQ(file.callback.frames.size(), 4U);
}

TEST(Delivery, RefusedFrameEndsThePassAndIsLogged) {
  const LogTexts log;
  OpenFile file(FileOf(Cluster(0, Join({SimpleBlock(1, 0, {1}), SimpleBlock(1, 1, {1}), SimpleBlock(1, 2, {1})}))));
  file.callback.framesToTake = 1;
  EXPECT_TRUE(file.Process());
  EXPECT_EQ(file.callback.frames.size(), 1U);
  EXPECT_TRUE(log.Contains("DeliverSimpleBlock failed exiting"));
}

TEST(Delivery, RefusedFrameOfAGroupIsLoggedAsSuch) {
  const LogTexts log;
  OpenFile file(FileOf(Cluster(0, Group({Block(0, {1})}))));
  file.callback.framesToTake = 0;
  EXPECT_TRUE(file.Process());
  EXPECT_TRUE(log.Contains("DeliverBlockGroupBlocks failed exiting"));
}

TEST(Delivery, PendingEventStopsBeforeTheNextChild) {
  const ByteString bytes = FileOf(Cluster(300, Join({SimpleBlock(1, 0, {1}), SimpleBlock(1, 1, {1})})));
  for (std::int64_t answered = 0; answered < 3; ++answered) {
    const LogTexts log;
    OpenFile file(bytes);
    file.callback.eventAfter = answered;
    EXPECT_TRUE(file.Process());
    EXPECT_EQ(file.callback.frames.size(), static_cast<std::size_t>(std::max<std::int64_t>(answered - 1, 0)));
    EXPECT_TRUE(log.Contains("CEbmlScanner::DeliverCluster exiting"));
    EXPECT_EQ(log.Contains("cluster time: 3000000"), answered > 0);
  }
}

TEST(Delivery, NoClusterIsRefusedAndLogged) {
  const LogTexts log;
  const CMatroskaInfo info;
  const std::function<bool(const FrameInfo&)> onFrame = [](const FrameInfo&) { return true; };
  const std::function<bool()> eventsPending = [] { return false; };
  CClusterDelivery delivery(info, onFrame, eventsPending);
  EXPECT_FALSE(delivery.DeliverCluster(nullptr));
  EXPECT_TRUE(log.Contains("CEbmlScanner::DeliverCluster !cluster exiting"));
  EXPECT_TRUE(delivery.DeliverBlockGroupBlocks({}));
}

TEST(Delivery, FailingReadIsThrownAndTheNextPassWorks) {
  OpenFile file(FileOf(Cluster(0, SimpleBlock(1, 0, Noise(1000, 1)))));
  file.reader.brokenFrom = file.reader.reportedLength - 100;
  EXPECT_EQ(MessageOf([&] { file.Process(); }),
            "<CAsyncCallback::read> failed to read input data using IAsyncReader::SyncRead method");
  file.reader.brokenFrom = -1;
  EXPECT_FALSE(file.Process());
  EXPECT_EQ(file.callback.frames.size(), 1U);
}

TEST(Delivery, ClustersOfUnknownSizeEndAtTheNextCluster) {
  const auto cluster = [](std::uint64_t time) {
    return ElementOfUnknownSize(id::kCluster, Join({Unsigned(id::kTimecode, time), SimpleBlock(1, 0, {1})}));
  };
  OpenFile file(FileOf(Join({cluster(0), cluster(10), Element(id::kTags, {}), cluster(20)})));
  EXPECT_FALSE(file.Process());
  EXPECT_EQ(file.StartTimes(), (Times{0, 100000, 200000}));
}

TEST(Delivery, FrameCutByTheEndOfTheFileIsLeftOut) {
  ByteString bytes = FileOf(Cluster(0, Join({SimpleBlock(1, 0, Noise(100, 1)), SimpleBlock(1, 1, Noise(100, 2))})));
  bytes.resize(bytes.size() - 50);
  OpenFile file(bytes);
  EXPECT_FALSE(file.Process());
  EXPECT_EQ(file.StartTimes(), (Times{0}));
}

TEST(Delivery, BlockFoundInsideADamagedGroupIsReadFromItsOwnBytes) {
  const ByteString lost = SimpleBlock(1, 5, Noise(40, 3));
  const ByteString group = Group({Block(1, {1}), lost});
  OpenFile file(FileOf(Cluster(0, Join({group, SimpleBlock(1, 9, {9})}))));
  EXPECT_FALSE(file.Process());
  EXPECT_EQ(file.StartTimes(), (Times{10000, 50000, 90000}));
  EXPECT_EQ(file.callback.frames[1].data, Noise(40, 3));
}

}  // namespace
}  // namespace tarvex::test
