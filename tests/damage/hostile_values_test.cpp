// Values that nobody means well with, as a host gets to see them through the filter's interfaces: texts
// and times of any kind. The bytes of the file are in order otherwise.
#include <gtest/gtest.h>

#include <limits>

#include "framework/bstr.h"
#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/graph_test.h"
#include "tests/support/source_dir.h"

namespace tarvex::test {
namespace {

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();

/// A file whose SeekHead leads to its one chapter.
ByteString FileWith(const ByteString& info, const ByteString& tracks, const ByteString& chapter,
                    const ByteString& clusters) {
  const ByteString head = Join({Element(id::kInfo, info), Element(id::kTracks, tracks)});
  const std::size_t position = SeekHeadFor(id::kChapters, 0).size() + head.size() + clusters.size();
  return MatroskaFile(Join({SeekHeadFor(id::kChapters, position), head, clusters,
                            Element(id::kChapters, Element(id::kEditionEntry, Element(id::kChapterAtom, chapter)))}));
}

class HostileValues : public GraphTest {
 protected:
  void OpenBytes(const ByteString& file) {
    Drop();
    Open(SourceFilter::FromBytes(file));
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  }

  /// Plays to the end, and again after a seek to each of `times`. How many samples the first sink got first.
  std::size_t Play(std::initializer_list<LONGLONG> times) {
    EXPECT_TRUE(SUCCEEDED(Graph().Run()));
    EXPECT_TRUE(Graph().WaitForEnd());
    const std::size_t count = Graph().Sink(0).CountOf(SinkEvent::Kind::kSample);
    for (const LONGLONG time : times) {
      Seek(time);
      EXPECT_TRUE(Graph().WaitForEnd()) << time;
    }
    return count;
  }
};

// tests/data/make_hostile.py says what texts are in the file. mkvhost's transcript of it says how each is shown.
TEST_F(HostileValues, TextsComeWellFormed) {
  Drop();
  Open(SourceFilter::FromBytes(ReadWholeFile(SourceDir() + "/tests/data/hostile.mkv")));
  const auto expectWellFormed = [](WideView text) { EXPECT_EQ(WideFromUtf8(Utf8FromWide(text)), text); };
  DWORD streams = 0;
  EXPECT_EQ(Ask<IAMStreamSelect>()->Count(&streams), S_OK);
  EXPECT_EQ(streams, 5U);
  for (LONG k = 0; k < 5; ++k) {
    CoTaskMem<OLECHAR> name;
    Ask<IAMStreamSelect>()->Info(k, nullptr, nullptr, nullptr, nullptr, name.Put(), nullptr, nullptr);
    expectWellFormed(name.Get());
  }
  for (const auto& pin : Graph().OutputPins()) EXPECT_LT(NameOf(pin.Get()).size(), 128U * 3);
  for (LONG k = 1; k <= 3; ++k) {
    BStr marker;
    Ask<IAMExtendedSeeking>()->GetMarkerName(k, marker.Put());
    expectWellFormed(marker.View());
  }
}

constexpr struct Times {
  std::uint64_t cluster = 0;
  std::int16_t block = 0;
  std::uint64_t scale = 1000000;
  double duration = 1000;
  std::uint64_t frame = 40000000;  ///< default duration, nanoseconds
} kTimes[] = {
    {},
    {.block = -32768},
    {.cluster = kLargest, .block = -1},
    {.cluster = kLargest, .scale = kLargest},
    {.cluster = kLargest / 2},
    {.cluster = kLargest / 2 / 1000000, .block = 32767},
    {.cluster = kLargest / 1000000, .block = 32767},
    {.cluster = 1, .block = -32768, .scale = kLargest},
    {.block = -1, .scale = 0, .frame = 0},
    {.duration = 0},
    {.duration = -1},
    {.duration = 1e308},
    {.duration = -std::numeric_limits<double>::infinity()},
    {.duration = std::numeric_limits<double>::quiet_NaN()},
    {.scale = 100, .duration = 9223372036854775807.0},
    {.cluster = kLargest / 100, .frame = kLargest},
    {.cluster = 92233720368547, .frame = kLargest / 2},
};

TEST_F(HostileValues, FramesOfAnyTimeAreDeliveredAndEverySeekEnds) {
  for (const Times& times : kTimes) {
    SCOPED_TRACE(&times - kTimes);
    const ByteString info = Join({Unsigned(id::kTimecodeScale, times.scale), Float(id::kDuration, times.duration)});
    const ByteString frame = Unsigned(id::kDefaultDuration, times.frame);
    const ByteString chapter =
        Join({Unsigned(id::kChapterTimeStart, times.cluster), Unsigned(id::kChapterTimeEnd, kLargest)});
    const ByteString group =
        Element(id::kBlockGroup,
                Join({Element(id::kBlock, BlockData(2, times.block, 0, {1})), Unsigned(id::kBlockDuration, times.frame),
                      Element(id::kReferenceBlock, {0x80, 0, 0, 0, 0, 0, 0, 0})}));
    const ByteString frames = {2, 1, 2, 1, 2, 2, 3};  // three, of 1, 2 and 1 bytes
    const std::uint8_t flags = kKeyFlag | static_cast<std::uint8_t>(Lacing::kXiph);
    const ByteString lace = Element(id::kSimpleBlock, BlockData(2, times.block, flags, frames));
    const ByteString blocks = Join({SimpleBlock(2, times.block, {2}), SimpleBlock(1, times.block, {1}),
                                    SimpleBlock(1, 32767, {1}), SimpleBlock(2, -32768, {2}), group, lace});
    const ByteString size = Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)});
    const ByteString tracks =
        Join({TrackEntry(1, 1, "V_VP8", Join({Element(id::kVideo, size), frame})), TrackEntry(2, 2, "A_AC3", frame)});
    OpenBytes(FileWith(info, tracks, chapter,
                       Join({Cluster(times.cluster, blocks), Cluster(0, blocks), Cluster(times.cluster, blocks)})));
    double marker = -1;
    EXPECT_EQ(Ask<IAMExtendedSeeking>()->GetMarkerTime(1, &marker), S_OK);
    constexpr LONGLONG kEnd = std::numeric_limits<LONGLONG>::max();
    EXPECT_GE(Play({0, 1, 5000000, kEnd, kEnd - 1, -1, std::numeric_limits<LONGLONG>::min()}), 1U);
  }
}

}  // namespace
}  // namespace tarvex::test
