// The seek index: which of several positions counts, and when it is made once more. That of every file of the corpus is
// seen in where seeks lead.
#include <gtest/gtest.h>

#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

using Entries = std::vector<std::pair<std::uint64_t, std::uint64_t>>;  // positions of Clusters and times

Entries IndexOf(OpenFile& file) {
  file.scanner.BuildIndex();
  Entries entries;
  for (const SeekPoint& point : file.scanner.Index()) entries.emplace_back(point.position, point.time);
  return entries;
}

// A point is that of the track whose Cluster lies first. What the quick way does not know goes through libmatroska.
TEST(SeekIndex, OfSeveralPositionsInOnePointTheEarliestCounts) {
  constexpr std::uint64_t kFar = std::uint64_t{5} << 30;
  const auto positions = [](std::uint64_t track, std::uint64_t cluster) {
    return Element(id::kCueTrackPositions, Join({Unsigned(id::kCueTrack, track),  //
                                                 Unsigned(id::kCueClusterPosition, cluster)}));
  };
  for (const ByteString& unknown : {ByteString{}, Element(0x4444, {1})}) {
    ByteString points;
    for (const ByteString& two :
         {Join({positions(2, kFar + 900), positions(1, kFar + 800)}), Join({positions(1, 600), positions(2, 700)}),
          Join({positions(2, 400), positions(1, 500)})}) {
      const ByteString time = Unsigned(id::kCueTime, points.empty() ? 7 : 9);
      points = Join({points, Element(id::kCuePoint, Join({time, two, unknown}))});
    }
    const ByteString data = Join({SeekHeadFor(id::kCues, SeekHeadFor(id::kCues, 0).size()), Element(id::kCues, points),
                                  Element(id::kTracks, TrackEntry(1, 2, "A"))});
    OpenFile file(MatroskaFile(data));
    const std::uint64_t begin = file.reader.bytes.size() - data.size();
    EXPECT_EQ(IndexOf(file), (Entries{{begin + kFar + 800, 70000}, {begin + 600, 90000}}));
  }
}

TEST(SeekIndex, FailingReadOrPendingEventLeavesNoneAndItIsTriedAgain) {
  for (const bool fails : {true, false}) {
    OpenFile file(FileOf(Join({Cluster(0, SimpleBlock(1, 0, Zeros(10000))), Cluster(10, SimpleBlock(1, 0, {1}))})));
    if (fails) file.reader.brokenFrom = file.reader.reportedLength - 3;
    if (!fails) file.eventAfter = 1;
    EXPECT_EQ(IndexOf(file).size(), 0U);
    file.reader.brokenFrom = -1;
    EXPECT_EQ(IndexOf(file).size(), 2U);
  }
}

}  // namespace
}  // namespace tarvex::test
