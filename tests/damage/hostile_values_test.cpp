// Values that nobody means well with, as a host gets to see them through the filter's interfaces: names
// and times of any kind. The bytes of the file are in order otherwise.
#include <gtest/gtest.h>

#include <limits>

#include "framework/bstr.h"
#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/graph_test.h"

namespace tarvex::test {
namespace {

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();

ByteString VideoTrack(std::uint64_t number, const ByteString& more = {}) {
  const ByteString size = Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)});
  return TrackEntry(number, 1, "V_VP8", Join({Element(id::kVideo, size), more}));
}

ByteString AudioTrack(std::uint64_t number, const ByteString& more = {}) {
  return TrackEntry(number, 2, "A_AC3", more);
}

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

  /// Plays to the end, and again after a seek to each of `times`. How many samples each sink got first.
  std::vector<std::size_t> Play(std::initializer_list<LONGLONG> times = {}) {
    EXPECT_TRUE(SUCCEEDED(Graph().Run()));
    EXPECT_TRUE(Graph().WaitForEnd());
    std::vector<std::size_t> counts;
    for (const auto& sink : Graph().Sinks()) counts.push_back(sink->CountOf(SinkEvent::Kind::kSample));
    for (const LONGLONG time : times) {
      Seek(time);
      EXPECT_TRUE(Graph().WaitForEnd()) << time;
    }
    return counts;
  }
};

// Up to a zero. What is no UTF-8 is shown as U+FFFD or left out, as far as this test goes.
const struct Name {
  std::string bytes;
  bool isText = true;
} kNames[] = {
    {"\x1B]0;title\a\x1B[2J\r\n\xC2\x9B\x31m"},
    {"\xE2\x80\xAEgpj.exe\xE2\x80\xA8"},
    {"\xF0\x9F\x8E\xAC\xEF\xBF\xBE\xEF\xBF\xBF"},
    {"\xED\xA0\x80.\xED\xBF\xBF.\xED\xA0\xBC\xED\xBE\xAC", false},  // surrogates, alone and as a pair
    {"\xF4\x90\x80\x80\xF8\x88\x80\x80\x80", false},                // beyond Unicode
    {"\xC0\x80\xE0\x80\xAF\xF0\x80\x80\x80", false},                // overlong
    {"abc\xE6\x97", false},                                         // cut short
    {"\x80\xBF\xBF\xFE\xFF", false},                                // nothing that begins a letter
    {"", false},
    {"%s%n%08x%n"},
    {std::string(300000, 'x')},
    {std::string("one\0two", 7)},
};

// In everything that has a name, which becomes part of others, of a media type and of texts in the log.
TEST_F(HostileValues, NamesComeAsWellFormedText) {
  for (const Name& name : kNames) {
    SCOPED_TRACE(name.bytes.substr(0, 20));
    const ByteString odd = Join({Text(id::kLanguage, name.bytes), Text(id::kCodecId, name.bytes)});
    OpenBytes(FileWith(Text(id::kTitle, name.bytes),
                       Join({AudioTrack(1, Text(id::kTrackName, name.bytes)), TrackEntry(2, 2, "A_AC3", odd),
                             TrackEntry(3, 17, "S_TEXT/UTF8", odd)}),
                       Element(id::kChapterDisplay, Text(id::kChapterString, name.bytes)),
                       Cluster(0, Join({SimpleBlock(1, 0, {1}), SimpleBlock(2, 0, {2})}))));
    std::string stream;  // the first one in the end
    for (const LONG k : {2, 1, 0}) {
      CoTaskMem<OLECHAR> shown;
      Ask<IAMStreamSelect>()->Info(k, nullptr, nullptr, nullptr, nullptr, shown.Put(), nullptr, nullptr);
      stream = Utf8FromWide(shown.Get());
      EXPECT_EQ(WideFromUtf8(stream), WideString(shown.Get())) << "not well-formed";
    }
    EXPECT_TRUE(stream.starts_with("A: ") && stream.ends_with(" [English]")) << stream;
    EXPECT_TRUE(!name.isText || stream == std::string("A: ") + name.bytes.c_str() + " [English]") << stream;
    for (const auto& pin : Graph().OutputPins()) EXPECT_LT(NameOf(pin.Get()).size(), 128U * 3);
    BStr marker;
    EXPECT_EQ(Ask<IAMExtendedSeeking>()->GetMarkerName(1, marker.Put()), S_OK);
    EXPECT_EQ(WideFromUtf8(Utf8FromWide(marker.View())), WideString(marker.View()));
    EXPECT_LE(marker.View().size(), name.bytes.size() + 1);
    EXPECT_EQ(Play(), (std::vector<std::size_t>{1, 1, 0}));
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
    const ByteString blocks =
        Join({SimpleBlock(2, times.block, {2}), SimpleBlock(1, times.block, {1}), SimpleBlock(1, 32767, {1}),
              SimpleBlock(2, -32768, {2}), group, lace});
    OpenBytes(FileWith(info, Join({VideoTrack(1, frame), AudioTrack(2, frame)}), chapter,
                       Join({Cluster(times.cluster, blocks), Cluster(0, blocks), Cluster(times.cluster, blocks)})));
    double marker = -1;
    EXPECT_EQ(Ask<IAMExtendedSeeking>()->GetMarkerTime(1, &marker), S_OK);
    constexpr LONGLONG kEnd = std::numeric_limits<LONGLONG>::max();
    EXPECT_GE(Play({0, 1, 5000000, kEnd, kEnd - 1, -1, std::numeric_limits<LONGLONG>::min()}).at(0), 1U);
  }
}

}  // namespace
}  // namespace tarvex::test
