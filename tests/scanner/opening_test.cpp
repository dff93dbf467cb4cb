#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "framework/message_error.h"
#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

constexpr const char* kNoSegment = "<CEbmlScanner::CanProcess> No segment/level 0 element found";

std::string OpeningMessage(const ByteString& bytes) {
  return MessageOf([&] { OpenFile file(bytes); });
}

std::uint64_t DurationOf(double ticks, std::uint64_t scale) {
  const ByteString info = Element(id::kInfo, Join({Unsigned(id::kTimecodeScale, scale), Float(id::kDuration, ticks)}));
  const OpenFile file(MatroskaFile(info));
  return file.scanner.Duration();
}

TEST(Opening, WhatIsNotMatroskaIsRefusedWithItsText) {
  EXPECT_EQ(OpeningMessage({}), kNoSegment);
  EXPECT_EQ(OpeningMessage(FromText("RIFF")), kNoSegment);
  EXPECT_EQ(OpeningMessage(Id(id::kEbml)), kNoSegment);
  EXPECT_EQ(OpeningMessage(EbmlHead()), kNoSegment);
  EXPECT_EQ(OpeningMessage(Join({EbmlHead(), Zeros(100)})), kNoSegment);
  EXPECT_EQ(OpeningMessage(ElementOfUnknownSize(id::kEbml, FileOf({}))), kNoSegment);
}

TEST(Opening, SegmentIsFoundBehindOtherTopLevelElements) {
  const OpenFile file(Join({EbmlHead(), Element(id::kVoid, Noise(1000, 1)), Element(id::kSegment, Headers())}));
  EXPECT_EQ(file.scanner.Tracks(), 1U);
}

TEST(Opening, FailingReaderIsNamed) {
  const ByteString bytes = FileOf(Cluster(0, {}));
  for (std::int64_t read = 0; read < 20; ++read) {
    MemoryReader reader(bytes);
    reader.failingRead = read;
    CEbmlScanner scanner;
    EXPECT_EQ(MessageOf([&] { scanner.CanProcess(&reader); }),
              "<CAsyncCallback::read> failed to read input data using IAsyncReader::SyncRead method");
  }
}

TEST(Opening, DocTypeIsKeptAsItStands) {
  const ByteString segment = Element(id::kSegment, Headers());
  EXPECT_EQ(OpenFile(Join({EbmlHead("webm"), segment})).scanner.DocType(), "webm");
  EXPECT_EQ(OpenFile(Join({EbmlHead("anything"), segment})).scanner.DocType(), "anything");
  EXPECT_EQ(OpenFile(Join({Element(id::kEbml, {}), segment})).scanner.DocType(), "");
}

TEST(Opening, SegmentOfUnknownSizeHasTheLengthOfTheStream) {
  const ByteString bytes = Join({EbmlHead(), ElementOfUnknownSize(id::kSegment, Headers())});
  const OpenFile file(bytes);
  EXPECT_EQ(file.scanner.SegmentSize(), bytes.size());
  EXPECT_EQ(file.scanner.SegmentDataStart(), EbmlHead().size() + 12);
  EXPECT_EQ(file.scanner.Tracks(), 1U);
  const OpenFile sized(FileOf({}));
  EXPECT_EQ(sized.scanner.SegmentSize(), Headers().size());
}

TEST(Opening, InfoAndTracksAreFoundInAnyOrderAndBehindClusters) {
  const ByteString info = Element(id::kInfo, Unsigned(id::kTimecodeScale, 5000));
  const ByteString tracks = Element(id::kTracks, TrackEntry(1, 1, "V_TEST"));
  const ByteString cluster = Cluster(0, SimpleBlock(1, 0, Noise(50, 1)));
  for (const ByteString& order : {Join({tracks, cluster, info}), Join({cluster, cluster, info, cluster, tracks})}) {
    const OpenFile file(MatroskaFile(order));
    EXPECT_EQ(file.scanner.TimecodeScale(), 5000U);
    EXPECT_EQ(file.scanner.Tracks(), 1U);
  }
}

TEST(Opening, SecondElementOfAKindEndsTheSearch) {
  const ByteString info = Element(id::kInfo, Unsigned(id::kTimecodeScale, 5000));
  const OpenFile file(MatroskaFile(Join({info, info, Element(id::kTracks, TrackEntry(1, 1, "V_TEST"))})));
  EXPECT_EQ(file.scanner.Tracks(), 0U);
}

TEST(Opening, HeadersOfUnknownSizeEndAtTheNextElement) {
  const ByteString headers =
      Join({ElementOfUnknownSize(id::kInfo, Unsigned(id::kTimecodeScale, 5000)),
            ElementOfUnknownSize(id::kTracks, TrackEntry(1, 1, "V_TEST")), Cluster(0, SimpleBlock(1, 3, {1, 2}))});
  OpenFile file(MatroskaFile(headers));
  EXPECT_EQ(file.scanner.TimecodeScale(), 5000U);
  EXPECT_EQ(file.scanner.Tracks(), 1U);
  file.Process();
  EXPECT_EQ(file.callback.frames.size(), 1U);
}

TEST(Opening, DefaultsStandForMissingInformation) {
  const OpenFile file(MatroskaFile({}));
  EXPECT_EQ(file.scanner.TimecodeScale(), 1000000U);
  EXPECT_EQ(file.scanner.Duration(), 0U);
  EXPECT_EQ(file.scanner.Tracks(), 0U);
  EXPECT_EQ(file.scanner.TrackAt(0), nullptr);
  EXPECT_EQ(file.scanner.TrackByNumber(1), nullptr);
}

TEST(Opening, DurationIsCutAndNonsenseCountsAsAbsent) {
  EXPECT_EQ(DurationOf(5000.0, 1000000), 50000000U);
  EXPECT_EQ(DurationOf(0.99, 100), 0U);
  EXPECT_EQ(DurationOf(1e19, 100), 10000000000000000000U);
  EXPECT_EQ(DurationOf(1e300, 1000000), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(DurationOf(std::nan(""), 1000000), 0U);
  EXPECT_EQ(DurationOf(std::numeric_limits<double>::infinity(), 1000000), 0U);
  EXPECT_EQ(DurationOf(-1.0, 1000000), 0U);
  EXPECT_EQ(DurationOf(5000.0, 0), 0U);
}

TEST(Opening, SecondOpenForgetsTheFirst) {
  OpenFile file(FileOf(Cluster(0, SimpleBlock(1, 0, {1}))));
  file.scanner.BuildIndex();
  MemoryReader other(MatroskaFile({}));
  file.scanner.Reset();
  EXPECT_TRUE(file.scanner.Index().empty());
  EXPECT_FALSE(file.scanner.Process());
  file.scanner.CanProcess(&other);
  EXPECT_EQ(file.scanner.Tracks(), 0U);
}

}  // namespace
}  // namespace tarvex::test
