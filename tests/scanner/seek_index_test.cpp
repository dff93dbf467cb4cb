#include <gtest/gtest.h>

#include "scanner/index_search.h"
#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

using Index = std::vector<SeekPoint>;

ByteString CuePoint(std::uint64_t time, std::uint64_t track, std::uint64_t position) {
  return Element(id::kCuePoint,
                 Join({Unsigned(id::kCueTime, time),
                       Element(id::kCueTrackPositions,
                               Join({Unsigned(id::kCueTrack, track), Unsigned(id::kCueClusterPosition, position)}))}));
}

/// Cues behind a SeekHead and the headers, then the clusters.
struct CuedFile {
  CuedFile(const ByteString& points, const ByteString& clusters, const ByteString& between = {}) {
    const ByteString cues = Element(id::kCues, points);
    const std::size_t cuesPosition = SeekHeadFor(id::kCues, 0).size() + Headers().size() + between.size();
    bytes = MatroskaFile(Join({SeekHeadFor(id::kCues, cuesPosition), Headers(), between, cues, clusters}));
    dataStart = bytes.size() - cuesPosition - cues.size() - clusters.size();
  }

  ByteString bytes;
  std::uint64_t dataStart = 0;
};

/// Three Clusters at 0, 10 and 20 s, each with a key frame and another.
ByteString ThreeClusters(std::uint64_t track = 1) {
  ByteString all;
  for (std::uint64_t time = 0; time <= 20000; time += 10000) {
    all = Join({all, Cluster(time, Join({SimpleBlock(track, 0, {1}), SimpleBlock(track, 40, {2}, false)}))});
  }
  return all;
}

Index BuiltIndex(const ByteString& bytes) {
  OpenFile file(bytes);
  file.scanner.BuildIndex();
  return file.scanner.Index();
}

std::vector<std::uint64_t> TimesOf(const Index& index) {
  std::vector<std::uint64_t> times;
  for (const SeekPoint& point : index) times.push_back(point.time);
  return times;
}

using Times = std::vector<std::uint64_t>;

TEST(SeekIndex, CuesOfTrackOneAreTakenInFileOrder) {
  const CuedFile file(Join({CuePoint(20, 1, 500), CuePoint(5, 2, 100), CuePoint(10, 1, 400), CuePoint(10, 1, 400)}),
                      {});
  EXPECT_EQ(BuiltIndex(file.bytes),
            (Index{{file.dataStart + 500, 200000}, {file.dataStart + 400, 100000}, {file.dataStart + 400, 100000}}));
}

TEST(SeekIndex, CuePointsThatLackSomethingAreSkipped) {
  const ByteString noTime = Element(id::kCuePoint, Element(id::kCueTrackPositions, Unsigned(id::kCueTrack, 1)));
  const ByteString empty = Element(id::kCuePoint, {});
  const CuedFile file(Join({noTime, empty, CuePoint(1, 65537, 7), CuePoint(10, 1, 400)}), {});
  EXPECT_EQ(TimesOf(BuiltIndex(file.bytes)), Times{100000});
}

TEST(SeekIndex, CuesOfAnotherTrackLeaveTheClustersToBeRead) {
  const CuedFile file(CuePoint(5, 2, 100), ThreeClusters());
  EXPECT_EQ(TimesOf(BuiltIndex(file.bytes)), (Times{0, 100000000, 200000000}));
}

TEST(SeekIndex, CuesThatTheSeekHeadDoesNotLeadToAreNotFound) {
  const CuedFile cued(CuePoint(5, 1, 100), ThreeClusters());
  const ByteString seekHead = SeekHeadFor(id::kCues, 0);
  ByteString wrong = cued.bytes;
  wrong[static_cast<std::size_t>(cued.dataStart) + seekHead.size() - 1] = 1;  // a wrong position
  EXPECT_EQ(TimesOf(BuiltIndex(wrong)).size(), 3U);
  const ByteString info = Element(id::kInfo, {});
  const ByteString tracks = Element(id::kTracks, TrackEntry(1, 1, "V"));
  const ByteString late = Join({info, seekHead, tracks, Element(id::kCues, CuePoint(5, 1, 100)), ThreeClusters()});
  EXPECT_EQ(TimesOf(BuiltIndex(MatroskaFile(late))).size(), 3U);
}

TEST(SeekIndex, ChildOfTheSeekHeadThatIsNoEntryIsSkippedWithItsData) {
  const ByteString cues = Element(id::kCues, CuePoint(5, 1, 100));
  const ByteString entry = SeekHeadFor(id::kCues, 0);
  const std::size_t headBytes = Id(id::kSeekHead).size() + 1;
  const auto seekHead = [&](std::uint64_t position) {
    const ByteString whole = SeekHeadFor(id::kCues, position);
    const ByteString seek(whole.begin() + static_cast<std::ptrdiff_t>(headBytes), whole.end());
    // The checksum's bytes look like an entry of its own.
    return Element(id::kSeekHead, Join({Element(id::kCrc32, {0x4D, 0xBB, 0x80, 0x00}), seek}));
  };
  const std::size_t position = seekHead(0).size() + Headers().size();
  EXPECT_EQ(TimesOf(BuiltIndex(MatroskaFile(Join({seekHead(position), Headers(), cues})))), Times{50000});
}

TEST(SeekIndex, ScanTakesKeyFramesOfTheFirstVideoTrack) {
  const ByteString tracks = Element(id::kTracks, Join({TrackEntry(1, 2, "A"), TrackEntry(2, 1, "V")}));
  const ByteString group = Element(id::kBlockGroup, Element(id::kBlock, BlockData(2, 100, 0, {1})));
  const ByteString other =
      Element(id::kBlockGroup, Join({Element(id::kBlock, BlockData(2, 200, 0, {1})), Signed(id::kReferenceBlock, -1)}));
  const ByteString clusters =
      Cluster(1000, Join({SimpleBlock(1, 0, {1}), SimpleBlock(2, 40, {1}), SimpleBlock(2, 80, {1}, false), group, other,
                          Element(id::kBlockGroup, {})}));
  const ByteString bytes = MatroskaFile(Join({Element(id::kInfo, {}), tracks, clusters}));
  const std::uint64_t cluster = bytes.size() - clusters.size();
  EXPECT_EQ(BuiltIndex(bytes), (Index{{cluster, 10400000}, {cluster, 11000000}}));
}

TEST(SeekIndex, WithoutAVideoTrackTheScanTakesTrackOne) {
  EXPECT_EQ(TimesOf(BuiltIndex(FileOf(ThreeClusters(1)))).size(), 3U);
  EXPECT_TRUE(BuiltIndex(FileOf(ThreeClusters(2))).empty());
}

TEST(SeekIndex, IsBuiltOnceAlsoWhenNothingCameOfIt) {
  for (const ByteString& bytes : {FileOf(ThreeClusters(1)), FileOf(ThreeClusters(2))}) {
    OpenFile file(bytes);
    file.scanner.BuildIndex();
    const std::int64_t reads = file.reader.reads;
    file.scanner.BuildIndex();
    EXPECT_EQ(file.reader.reads, reads);
  }
}

TEST(SeekIndex, FailingReadLeavesNoIndexAndIsTriedAgain) {
  OpenFile file(FileOf(ThreeClusters()));
  file.reader.brokenFrom = file.reader.reportedLength - 3;
  file.scanner.BuildIndex();
  EXPECT_TRUE(file.scanner.Index().empty());
  file.reader.brokenFrom = -1;
  file.scanner.BuildIndex();
  EXPECT_EQ(file.scanner.Index().size(), 3U);
}

TEST(SeekIndex, PendingEventEndsTheScanAndItIsTriedAgain) {
  OpenFile file(FileOf(ThreeClusters()));
  file.callback.eventAfter = 1;
  file.scanner.BuildIndex();
  EXPECT_TRUE(file.scanner.Index().empty());
  file.scanner.BuildIndex();
  EXPECT_EQ(file.scanner.Index().size(), 3U);
}

TEST(SeekIndex, DeliveryBeginsOnePointBeforeTheStart) {
  const auto firstTime = [](std::uint64_t start) {
    OpenFile file(FileOf(ThreeClusters()));
    file.scanner.BuildIndex();
    file.scanner.SetStartTime(start);
    file.Process();
    return file.StartTimes().at(0);
  };
  EXPECT_EQ(firstTime(0), 0);
  EXPECT_EQ(firstTime(50000000), 0);
  EXPECT_EQ(firstTime(150000000), 0);
  EXPECT_EQ(firstTime(200000000), 100000000);
}

TEST(SeekIndex, PositionOutsideTheFileStartsAtTheFront) {
  const CuedFile cued(Join({CuePoint(0, 1, 1u << 30), CuePoint(1, 1, 1u << 30)}), ThreeClusters());
  OpenFile file(cued.bytes);
  file.scanner.BuildIndex();
  ASSERT_EQ(file.scanner.Index().size(), 2U);
  file.scanner.SetStartTime(50000);
  file.Process();
  EXPECT_EQ(file.callback.frames.size(), 6U);
}

const Index kIndex = {{1, 0}, {2, 100000000}, {3, 200000000}};

TEST(IndexSearch, FindsTheLastEntryNotAfterTheTime) {
  for (const std::uint64_t duration : {std::uint64_t{0}, std::uint64_t{300000000}, std::uint64_t{210000000}}) {
    EXPECT_EQ(FindIndexEntry(kIndex, 0, duration), 0);
    EXPECT_EQ(FindIndexEntry(kIndex, 99999999, duration), 0);
    EXPECT_EQ(FindIndexEntry(kIndex, 150000000, duration), 1);
    EXPECT_EQ(FindIndexEntry(kIndex, 200000000, duration), 2);
  }
}

TEST(IndexSearch, TimeBehindTheDurationGivesTheLastOrFarBehindTheFirst) {
  EXPECT_EQ(FindIndexEntry(kIndex, 301000000, 300000000), 2);
  EXPECT_EQ(FindIndexEntry(kIndex, 900000000, 300000000), 0);
  EXPECT_EQ(FindIndexEntry(kIndex, 900000000, 0), 2);
}

TEST(IndexSearch, EmptyAndUnsortedIndexesAnswerToo) {
  EXPECT_EQ(FindIndexEntry({}, 5, 10), 0);
  const Index unsorted = {{1, 50}, {2, 10}, {3, 40}, {4, 5}};
  EXPECT_EQ(FindIndexEntry(unsorted, 7, 10), 0);
  EXPECT_EQ(FindIndexEntry(unsorted, 45, 0), 0);
  EXPECT_EQ(FindIndexEntry(unsorted, 45, 60), 3);
  const Index beforeZero = {{1, static_cast<std::uint64_t>(std::int64_t{-20})}, {2, 30}};
  EXPECT_EQ(FindIndexEntry(beforeZero, 10, 0), 0);
  EXPECT_EQ(FindIndexEntry(beforeZero, 30, 0), 1);
}

}  // namespace
}  // namespace tarvex::test
