#include <gtest/gtest.h>

#include "framework/text_conversion.h"
#include "scanner/matroska_info.h"
#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

ByteString FileWithTracks(const ByteString& entries) { return MatroskaFile(Element(id::kTracks, entries)); }

TEST(Tracks, EveryEntryIsAnnouncedAndLoggedInFileOrder) {
  const LogTexts log;
  const OpenFile file(FileWithTracks(Join({TrackEntry(7, 1, "V_ONE"), TrackEntry(2, 2, "A_TWO")})));
  EXPECT_EQ(file.callback.tracks, (std::vector<std::uint32_t>{0, 1}));
  EXPECT_EQ(log.texts, (std::vector<std::string>{"* Process Tracks Begin", "Current Heap Num: 0", "Current Heap Num: 1",
                                                 "* Process Tracks End"}));
  EXPECT_EQ(file.scanner.TrackAt(1)->String("KaxCodecID"), "A_TWO");
  EXPECT_EQ(file.scanner.TrackByNumber(7), file.scanner.TrackAt(0));
}

TEST(Tracks, WithoutCallbackTheTablesAreFilledAllTheSame) {
  const LogTexts log;
  MemoryReader reader(FileWithTracks(TrackEntry(1, 1, "V_ONE")));
  CEbmlScanner scanner;
  scanner.CanProcess(&reader);
  EXPECT_EQ(scanner.Tracks(), 1U);
  EXPECT_TRUE(log.Contains("Scanner callback is not found"));
}

TEST(Tracks, KeptElementsAreReadByTheirKind) {
  const ByteString video = Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)}));
  const ByteString audio =
      Element(id::kAudio, Join({Float(id::kSamplingFrequency, 44100.0), Unsigned(id::kChannels, 2)}));
  const ByteString more = Join({video, audio, Text(id::kTrackName, "T\xC3\xBCr"), Text(id::kLanguage, "ger"),
                                Element(id::kCodecPrivate, {1, 2, 3}), Unsigned(id::kDefaultDuration, 40000000)});
  const OpenFile file(FileWithTracks(TrackEntry(1, 1, "V_ONE", more)));
  const CHeap& track = *file.scanner.TrackAt(0);
  EXPECT_EQ(track.Unsigned("KaxVideoPixelWidth"), 320U);
  EXPECT_EQ(track.Unsigned("KaxVideoPixelHeight"), 240U);
  EXPECT_EQ(track.Float("KaxAudioSamplingFreq"), 44100.0);
  EXPECT_EQ(track.Unsigned("KaxAudioChannels"), 2U);
  EXPECT_TRUE(track.Text("KaxTrackName") == WideString(OLESTR("T\u00FCr")));
  EXPECT_EQ(track.String("KaxTrackLanguage"), "ger");
  const auto codecPrivate = track.Binary("KaxCodecPrivate");
  ASSERT_TRUE(codecPrivate);
  EXPECT_EQ(ByteString(codecPrivate->begin(), codecPrivate->end()), (ByteString{1, 2, 3}));
  EXPECT_EQ(file.scanner.DefaultFrameDuration(1), 400000U);
}

TEST(Tracks, AbsentOrOtherKindsAnswerNothing) {
  const OpenFile file(FileWithTracks(TrackEntry(1, 1, "V_ONE")));
  const CHeap& track = *file.scanner.TrackAt(0);
  EXPECT_EQ(track.Find("KaxTrackName"), nullptr);
  EXPECT_FALSE(track.Unsigned("KaxCodecID"));
  EXPECT_FALSE(track.String("KaxTrackNumber"));
  EXPECT_FALSE(track.Binary("KaxCodecPrivate"));
  EXPECT_EQ(file.scanner.DefaultFrameDuration(1), 0U);
  EXPECT_EQ(file.scanner.DefaultFrameDuration(2), 0U);
}

TEST(Tracks, LastElementOfAKindCounts) {
  const OpenFile file(FileWithTracks(TrackEntry(1, 1, "V_FIRST", Text(id::kCodecId, "V_SECOND"))));
  EXPECT_EQ(file.scanner.TrackAt(0)->String("KaxCodecID"), "V_SECOND");
}

TEST(Tracks, PictureSizeCountsInsideVideoOnly) {
  const OpenFile file(FileWithTracks(TrackEntry(1, 1, "V_ONE", Unsigned(id::kPixelWidth, 320))));
  EXPECT_EQ(file.scanner.TrackAt(0)->Find("KaxVideoPixelWidth"), nullptr);
}

TEST(Tracks, CopiedTableOutlivesTheFile) {
  CHeap copy;
  {
    const OpenFile file(FileWithTracks(TrackEntry(1, 1, "V_ONE")));
    copy = *file.scanner.TrackAt(0);
  }
  EXPECT_EQ(copy.String("KaxCodecID"), "V_ONE");
}

TEST(Tracks, NumbersThatDifferInHighBitsAreDifferentTracks) {
  const std::uint64_t large = (std::uint64_t{1} << 32) + 1;
  const OpenFile file(FileWithTracks(Join({TrackEntry(large, 1, "V_LARGE"), TrackEntry(1, 2, "A_SMALL")})));
  EXPECT_EQ(file.scanner.TrackByNumber(1), file.scanner.TrackAt(1));
  EXPECT_EQ(file.scanner.TrackByNumber(large), file.scanner.TrackAt(0));
}

TEST(Tracks, FirstVideoTrackIsSoughtWithoutGaps) {
  const auto firstVideo = [](std::initializer_list<std::pair<std::uint64_t, std::uint64_t>> tracks) {
    CMatroskaInfo info;
    for (const auto& [number, type] : tracks) {
      const OpenFile file(FileWithTracks(TrackEntry(number, type, "X")));
      info.AddTrack() = *file.scanner.TrackAt(0);
      info.FinishTrack();
    }
    return info.FirstVideoTrackNumber();
  };
  EXPECT_EQ(firstVideo({{1, 2}, {2, 1}}), 2);
  EXPECT_EQ(firstVideo({{2, 1}, {1, 1}}), 1);
  EXPECT_EQ(firstVideo({{1, 2}, {3, 1}}), -1);
  EXPECT_EQ(firstVideo({}), -1);
}

TEST(Tracks, TextCutInsideACharacterKeepsWhatIsWhole) {
  const OpenFile file(FileWithTracks(TrackEntry(1, 1, "V_ONE", Text(id::kTrackName, "ab\xC3"))));
  EXPECT_EQ(file.scanner.Tracks(), 1U);
  EXPECT_TRUE(file.scanner.TrackAt(0)->Text("KaxTrackName") == WideString(OLESTR("ab")));
}

}  // namespace
}  // namespace tarvex::test
