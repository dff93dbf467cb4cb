// Values that nobody means well with, as a host gets to see them through the filter's interfaces: names,
// times and track numbers of any kind. The bytes of the file are in order otherwise.
#include <gtest/gtest.h>

#include <limits>

#include "framework/bstr.h"
#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/module_config.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

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

/// A file whose SeekHead leads to its chapters.
ByteString FileWith(const ByteString& info, const ByteString& tracks, const ByteString& chapters,
                    const ByteString& clusters) {
  const ByteString head = Join({Element(id::kInfo, info), Element(id::kTracks, tracks)});
  const std::size_t position = SeekHeadFor(id::kChapters, 0).size() + head.size() + clusters.size();
  return MatroskaFile(Join({SeekHeadFor(id::kChapters, position), head, clusters, chapters}));
}

ByteString Chapter(std::string_view name, std::uint64_t start = 0, std::uint64_t end = 0) {
  const ByteString times = Join({Unsigned(id::kChapterTimeStart, start), Unsigned(id::kChapterTimeEnd, end)});
  const ByteString display = Element(id::kChapterDisplay, Text(id::kChapterString, name));
  return Element(id::kChapters, Element(id::kEditionEntry, Element(id::kChapterAtom, Join({times, display}))));
}

class HostileValues : public testing::Test {
 protected:
  void TearDown() override { EXPECT_TRUE(ModuleBecomesIdle()); }

  static void Open(TestGraph& graph, const ByteString& file, bool separatePins = true) {
    ASSERT_EQ(graph.SeparatePins(separatePins), S_OK);
    ASSERT_EQ(graph.Open(SourceFilter::FromBytes(file).Get()), S_OK);
  }

  /// Plays to the end and seeks to `times` in turn, again to the end.
  static void Play(TestGraph& graph, std::initializer_list<LONGLONG> times = {}) {
    ASSERT_EQ(graph.ConnectSinks(SinkKind::kRecording), S_OK);
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    ASSERT_TRUE(graph.WaitForEnd());
    for (LONGLONG time : times) {
      SCOPED_TRACE(time);
      const auto seeking = QueryFor<IMediaSeeking>(graph.OutputPins().at(0).Get());
      seeking->SetPositions(&time, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
      ASSERT_TRUE(graph.WaitForEnd());
    }
    ASSERT_TRUE(SUCCEEDED(graph.Stop()));
  }

  static std::vector<WideString> StreamNames(TestGraph& graph) {
    const auto select = QueryFor<IAMStreamSelect>(graph.Splitter());
    DWORD count = 0;
    EXPECT_EQ(select->Count(&count), S_OK);
    std::vector<WideString> names;
    for (DWORD k = 0; k < count; ++k) {
      CoTaskMem<OLECHAR> name;
      EXPECT_EQ(select->Info(static_cast<LONG>(k), nullptr, nullptr, nullptr, nullptr, name.Put(), nullptr, nullptr),
                S_OK);
      names.emplace_back(name.Get());
    }
    return names;
  }

  static WideString ChapterName(TestGraph& graph) {
    ComPtr<IModuleConfig> config;
    EXPECT_EQ(graph.Splitter()->QueryInterface(IID_IModuleConfig, config.PutVoid()), S_OK);
    ChapterEntry entry{};
    VARIANT value{};
    value.vt = VT_PTR;
    value.byref = &entry;
    EXPECT_EQ(config->GetValue(&paramChapterList, &value), S_OK);
    BStr name;
    *name.Put() = entry.name;
    return WideString(name.View());
  }
};

struct Name {
  const char* what;
  std::string bytes;
  std::string shown;  ///< UTF-8
};

// What is no UTF-8 is shown as U+FFFD or left out, as far as this test goes: `shown` is empty.
const std::vector<Name>& Names() {
  static const std::vector<Name> names = {
      {"escape sequences", "\x1B]0;title\a\x1B[2J", "\x1B]0;title\a\x1B[2J"},
      {"controls of eight bits", "\xC2\x9B\x31m", "\xC2\x9B\x31m"},
      {"lines",
       "a\r\nb\xE2\x80\xA8"
       "c",
       "a\r\nb\xE2\x80\xA8"
       "c"},
      {"direction", "\xE2\x80\xAEgpj.exe", "\xE2\x80\xAEgpj.exe"},
      {"beyond the basic plane", "\xF0\x9F\x8E\xAC", "\xF0\x9F\x8E\xAC"},
      {"noncharacters", "\xEF\xBF\xBE\xEF\xBF\xBF", "\xEF\xBF\xBE\xEF\xBF\xBF"},
      {"lone surrogates",
       "a\xED\xA0\x80"
       "b\xED\xBF\xBF",
       ""},
      {"a pair of surrogates", "\xED\xA0\xBC\xED\xBE\xAC", ""},
      {"beyond Unicode", "\xF4\x90\x80\x80\xF8\x88\x80\x80\x80", ""},
      {"overlong", "\xC0\x80\xE0\x80\xAF\xF0\x80\x80\x80", ""},
      {"cut short", "abc\xE6\x97", ""},
      {"continuations alone", "\x80\xBF\xBF", ""},
      {"every byte",
       [] {
         std::string all;
         for (int k = 1; k < 256; ++k) all += static_cast<char>(k);
         return all;
       }(),
       ""},
      {"nothing", "", ""},
      {"percent signs", "%s%n%08x%n", "%s%n%08x%n"},
      {"very long", std::string(300000, 'x'), std::string(300000, 'x')},
      {"zero within", std::string("one\0two", 7), "one"},
  };
  return names;
}

bool IsWellFormed(const WideString& text) {
  const std::string narrow = Utf8FromWide(text);
  return WideFromUtf8(narrow) == text;
}

// The kind in front, the language behind.
TEST_F(HostileValues, NamesOfTracksComeAsWellFormedText) {
  for (const Name& name : Names()) {
    SCOPED_TRACE(name.what);
    TestGraph graph;
    Open(graph, FileWith({}, Join({AudioTrack(1, Text(id::kTrackName, name.bytes)), AudioTrack(2)}), {}, {}));
    const auto names = StreamNames(graph);
    ASSERT_EQ(names.size(), 2U);
    EXPECT_TRUE(names[0].starts_with(OLESTR("A: ")));
    EXPECT_TRUE(names[0].ends_with(OLESTR(" [English]")));
    EXPECT_TRUE(IsWellFormed(names[0]));
    if (!name.shown.empty()) {
      EXPECT_EQ(names[0], WideFromUtf8("A: " + name.shown + " [English]"));
    }
  }
}

TEST_F(HostileValues, NamesOfChaptersEndInTheirLength) {
  for (const Name& name : Names()) {
    SCOPED_TRACE(name.what);
    TestGraph graph;
    Open(graph, FileWith({}, AudioTrack(1), Chapter(name.bytes), {}));
    const WideString chapter = ChapterName(graph);
    EXPECT_LE(chapter.size(), name.bytes.size() + 1);
    EXPECT_TRUE(IsWellFormed(chapter));
    BStr marker;
    const auto seeking = QueryFor<IAMExtendedSeeking>(graph.Splitter());
    EXPECT_EQ(seeking->GetMarkerName(1, marker.Put()), S_OK);
    EXPECT_EQ(WideString(marker.View()), chapter);
  }
}

// They become part of names, of a media type and of texts in the log.
TEST_F(HostileValues, LanguagesAndIdentifiersOfAnyKindArePlayed) {
  for (const Name& name : Names()) {
    SCOPED_TRACE(name.what);
    TestGraph graph;
    const ByteString codec = Text(id::kCodecId, name.bytes);
    const ByteString language = Text(id::kLanguage, name.bytes);
    Open(graph, FileWith(Text(id::kTitle, name.bytes),
                         Join({VideoTrack(1, language), TrackEntry(2, 2, "A_AC3", Join({codec, language})),
                               TrackEntry(3, 17, "S_TEXT/UTF8", Join({codec, language}))}),
                         {}, Cluster(0, Join({SimpleBlock(1, 0, {1}), SimpleBlock(2, 0, {2})}))));
    for (const auto& pin : graph.OutputPins()) EXPECT_LT(NameOf(pin.Get()).size(), 128U * 3);
    for (const WideString& stream : StreamNames(graph)) EXPECT_TRUE(IsWellFormed(stream));
    Play(graph);
  }
}

struct Times {
  std::uint64_t cluster = 0;
  std::int16_t block = 0;
  std::uint64_t scale = 1000000;
  double duration = 1000;
  std::uint64_t frame = 40000000;  ///< default duration, nanoseconds
  std::size_t delivered = 10;      ///< sound that is over before the start is not
};

void PrintTo(const Times& times, std::ostream* out) {
  *out << times.cluster << ' ' << times.block << ' ' << times.scale << ' ' << times.duration << ' ' << times.frame;
}

class HostileTimes : public HostileValues, public testing::WithParamInterface<Times> {};

TEST_P(HostileTimes, FramesAreDeliveredAndEverySeekEnds) {
  const Times times = GetParam();
  const ByteString info = Join({Unsigned(id::kTimecodeScale, times.scale), Float(id::kDuration, times.duration)});
  const ByteString frame = Unsigned(id::kDefaultDuration, times.frame);
  const ByteString group =
      Element(id::kBlockGroup,
              Join({Element(id::kBlock, BlockData(1, times.block, 0, {1})), Unsigned(id::kBlockDuration, times.frame),
                    Signed(id::kReferenceBlock, std::numeric_limits<std::int64_t>::min())}));
  const ByteString lace = LacedBlock(1, times.block, Lacing::kXiph, {{1}, {2, 2}, {3}});
  const ByteString cluster = Cluster(times.cluster, Join({SimpleBlock(1, times.block, {1}), group, lace}));
  TestGraph graph;
  Open(graph, FileWith(info, AudioTrack(1, frame), Chapter("c", times.cluster, kLargest), Join({cluster, cluster})));
  const auto seeking = QueryFor<IAMExtendedSeeking>(graph.Splitter());
  double marker = -1;
  EXPECT_EQ(seeking->GetMarkerTime(1, &marker), S_OK);
  Play(graph);
  EXPECT_EQ(graph.Sink(0).Samples().size(), times.delivered);
  constexpr LONGLONG kEnd = std::numeric_limits<LONGLONG>::max();
  Play(graph, {0, 1, 5000000, kEnd, kEnd - 1, -1, std::numeric_limits<LONGLONG>::min()});
}

// The same times with a picture, for which all pins hold their frames.
TEST_P(HostileTimes, PicturesEndHoweverMuchTheyAreHeld) {
  const Times times = GetParam();
  const ByteString info = Join({Unsigned(id::kTimecodeScale, times.scale), Float(id::kDuration, times.duration)});
  const ByteString frame = Unsigned(id::kDefaultDuration, times.frame);
  const ByteString blocks = Join({SimpleBlock(2, times.block, {2}), SimpleBlock(1, times.block, {1}),
                                  SimpleBlock(1, 32767, {1}), SimpleBlock(2, -32768, {2})});
  TestGraph graph;
  Open(graph, FileWith(info, Join({VideoTrack(1, frame), AudioTrack(2, frame)}), {},
                       Join({Cluster(times.cluster, blocks), Cluster(0, blocks), Cluster(times.cluster, blocks)})));
  Play(graph, {0, 1, 5000000, std::numeric_limits<LONGLONG>::max(), std::numeric_limits<LONGLONG>::min()});
}

constexpr Times kTimes[] = {
    {},
    {.cluster = 0, .block = -32768, .delivered = 2},
    {.cluster = kLargest},
    {.cluster = kLargest, .block = -1},
    {.cluster = kLargest, .scale = kLargest},
    {.cluster = kLargest / 2},
    {.cluster = kLargest / 2 / 1000000, .block = 32767},
    {.cluster = kLargest / 1000000, .block = 32767},
    {.cluster = 1, .block = -32768, .scale = kLargest},
    {.block = 1, .scale = 0},
    {.block = -1, .scale = 0, .frame = 0},
    {.duration = 0},
    {.duration = -1},
    {.duration = 1e308},
    {.duration = std::numeric_limits<double>::infinity()},
    {.duration = -std::numeric_limits<double>::infinity()},
    {.duration = std::numeric_limits<double>::quiet_NaN()},
    {.scale = 100, .duration = 9223372036854775807.0},
    {.frame = kLargest},
    {.cluster = kLargest / 100, .frame = kLargest},
    {.cluster = 92233720368547, .frame = kLargest / 2},
};
INSTANTIATE_TEST_SUITE_P(Values, HostileTimes, testing::ValuesIn(kTimes));

/// How many samples each sink got.
std::vector<std::size_t> Counts(TestGraph& graph) {
  std::vector<std::size_t> counts;
  for (const auto& sink : graph.Sinks()) counts.push_back(sink->Samples().size());
  return counts;
}

TEST_F(HostileValues, TwoTracksOfOneNumberAreOne) {
  for (const bool separate : {false, true}) {
    TestGraph graph;
    Open(graph,
         FileWith({}, Join({AudioTrack(1, Text(id::kTrackName, "first")), VideoTrack(1), AudioTrack(1)}), {},
                  Cluster(0, Join({SimpleBlock(1, 0, {1}), SimpleBlock(1, 1, {2})}))),
         separate);
    EXPECT_EQ(StreamNames(graph), std::vector<WideString>{OLESTR("A: first [English]")});
    ASSERT_EQ(graph.OutputPins().size(), 1U);
    Play(graph);
    EXPECT_EQ(Counts(graph), std::vector<std::size_t>{2});
  }
}

TEST_F(HostileValues, TrackNumberZeroIsANumber) {
  for (const bool separate : {false, true}) {
    TestGraph graph;
    Open(graph,
         FileWith({}, Join({AudioTrack(0), TrackEntry(1, 17, "S_TEXT/UTF8")}), {},
                  Cluster(0, Join({SimpleBlock(0, 0, {1}), SimpleBlock(1, 1, {2})}))),
         separate);
    ASSERT_EQ(graph.OutputPins().size(), 2U);
    Play(graph);
    EXPECT_EQ(Counts(graph), (std::vector<std::size_t>{1, 1}));
  }
}

// A number that does not fit is cut off, so such a track may take the place of another. What its blocks
// hold reaches no pin.
TEST_F(HostileValues, TrackNumbersBeyond32BitsReachNoOtherTrack) {
  constexpr std::uint64_t kBeyond = std::uint64_t{1} << 32;
  TestGraph graph;
  Open(graph, FileWith({}, Join({AudioTrack(1), AudioTrack(kBeyond), AudioTrack(kBeyond + 1)}), {},
                       Cluster(0, Join({SimpleBlock(1, 0, {1}), SimpleBlock(kBeyond, 0, {2}),
                                        SimpleBlock(kBeyond + 1, 0, {3}), SimpleBlock(kBeyond * 1000, 0, {3})}))));
  Play(graph);
  std::size_t samples = 0;
  for (const std::size_t count : Counts(graph)) samples += count;
  EXPECT_EQ(samples, 1U);
}

}  // namespace
}  // namespace tarvex::test
