// Pin creation: records from track entries, which pins a file gets, their names and order, and the
// streams that stream selection counts.
#include "pins/creator/out_pins_creator.h"

#include <gtest/gtest.h>
#include <matroska/KaxTrackEntryData.h>

#include "tests/pins_creator/block_writer.h"
#include "tests/pins_creator/fake_splitter.h"
#include "tests/pins_creator/track_builder.h"

namespace tarvex::test {
namespace {

TrackBuilder Video(std::uint64_t number) { return TrackBuilder(number, 1, "V_VP8").Size(16, 16); }
TrackBuilder Audio(std::uint64_t number) { return TrackBuilder(number, 2, "A_AC3"); }
TrackBuilder Subtitle(std::uint64_t number) { return TrackBuilder(number, 17, "S_TEXT/UTF8"); }
TrackBuilder Unflagged(std::uint64_t number) { return Subtitle(number).Default(false); }

using Names = std::vector<std::string>;
using Numbers = std::vector<std::uint32_t>;

class OutPinsCreator : public testing::Test {
 protected:
  OutPinsCreator() : m_filter(MakeCom<FakeSplitter>()) {
    OverrideUserLanguageForTests("German");
    m_creator.SetFilter(m_filter.Get());
  }
  ~OutPinsCreator() override {
    m_filter->pins.clear();
    OverrideUserLanguageForTests(nullptr);
  }

  void Add(std::initializer_list<TrackBuilder> tracks) {
    for (const TrackBuilder& track : tracks) m_creator.CreatePin(track);
  }
  std::string Refusal(const CHeap& track) {
    return ThrownBy([&] { m_creator.CreatePin(track); });
  }
  TrackPinInfo Record(std::uint32_t number) {
    TrackPinInfo info;
    EXPECT_TRUE(m_creator.GetTrackInfoByNumber(number, info)) << number;
    return info;
  }
  // Track numbers in stream order.
  Numbers Streams() {
    Numbers numbers;
    for (std::uint32_t index = 0; index < m_creator.GetStreamCount(); ++index) {
      TrackPinInfo info;
      EXPECT_TRUE(m_creator.GetTrackInfoByIndex(index, info)) << index;
      numbers.push_back(info.trackNumber);
    }
    return numbers;
  }
  // Track numbers in pin order.
  Numbers Carried() {
    Numbers numbers;
    for (const auto& pin : m_filter->pins) numbers.push_back(pin->Track().trackNumber);
    return numbers;
  }

  ComPtr<FakeSplitter> m_filter;
  COutPinsCreator m_creator;
};

TEST_F(OutPinsCreator, RecordHasTheFormatsDefaults) {
  Add({TrackBuilder().Number(7).Type(2)});
  const TrackPinInfo info = Record(7);
  EXPECT_EQ(info.trackNumber, 7u);
  EXPECT_EQ(info.trackType, 2u);
  EXPECT_EQ(info.language, "eng");
  EXPECT_TRUE(info.trackName.empty());
  EXPECT_EQ(info.codecId, "");
  EXPECT_TRUE(info.defaultFlag);
  EXPECT_FALSE(info.forcedFlag);
}

TEST_F(OutPinsCreator, RecordHasWhatTheEntrySays) {
  Add({Subtitle(7).Name("F\xC3\xBCr alle").Language("ger").Default(false).Forced(true)});
  const TrackPinInfo info = Record(7);
  EXPECT_EQ(info.language, "ger");
  EXPECT_TRUE(info.trackName == OLESTR("F\u00FCr alle"));
  EXPECT_EQ(info.codecId, "S_TEXT/UTF8");
  EXPECT_FALSE(info.defaultFlag);
  EXPECT_TRUE(info.forcedFlag);
  EXPECT_EQ(info.mediaType.FormatBytes()[4], 'g');
}

TEST_F(OutPinsCreator, FlagsAreAnyValueButZero) {
  TrackBuilder track = Subtitle(7);
  libmatroska::KaxTrackFlagForced forced;
  forced.SetValue(std::uint64_t{1} << 40);
  CHeap heap = track;
  heap.Store("KaxTrackFlagForced", forced);
  m_creator.CreatePin(heap);
  EXPECT_TRUE(Record(7).forcedFlag);
}

TEST_F(OutPinsCreator, EntriesThatAreRefused) {
  EXPECT_EQ(Refusal(TrackBuilder().Number(1)), "COutPinsCreator::CreatePin failed get track type");
  EXPECT_EQ(Refusal(TrackBuilder()), "COutPinsCreator::CreatePin failed get track type");
  EXPECT_EQ(Refusal(TrackBuilder().Type(1)), "COutPinsCreator::CreatePin failed get track_number");
  EXPECT_EQ(Refusal(TrackBuilder(1, 3, "X")), "COutPinsCreator::CreatePin  unknown type");
  EXPECT_EQ(Refusal(TrackBuilder(1, 18, "X")), "COutPinsCreator::CreatePin  unknown type");
  EXPECT_EQ(Refusal(TrackBuilder(1, 1, "V_NEW").Private({1})), "<COutPinsCreator::createVideoPin> unknown codec id");
  TrackPinInfo info;
  EXPECT_FALSE(m_creator.GetTrackInfoByNumber(1, info));
}

TEST_F(OutPinsCreator, NumberThatIsKnownKeepsItsRecord) {
  Add({Audio(4).Language("ger"), Audio(4).Language("fre")});
  EXPECT_EQ(Record(4).language, "ger");
}

TEST_F(OutPinsCreator, ByteStreamSettingReachesAvc) {
  const ByteVector avcc = {1, 66, 0, 30, 255, 0xE0, 0};
  m_filter->annexB = true;
  Add({TrackBuilder(1, 1, "V_MPEG4/ISO/AVC").Size(16, 16).Private(avcc)});
  m_filter->annexB = false;
  Add({TrackBuilder(2, 1, "V_MPEG4/ISO/AVC").Size(16, 16).Private(avcc)});
  EXPECT_EQ(Record(1).mediaType.subtype.Data1, 0x8D2D71CBu);
  EXPECT_EQ(Record(2).mediaType.subtype.Data1, 0x31435641u);
}

TEST_F(OutPinsCreator, AllTracksInNumberOrder) {
  Add({Video(2), Audio(1).Language("ger"), Video(9).Language("fre"), Subtitle(3), Audio(5)});
  m_creator.CreatePinsForAllTracks();
  EXPECT_EQ(m_filter->PinNames(), (Names{"Audio 0 (lang:ger)", "Video 0 (lang:eng)", "Subtitle 0 (lang:eng)",
                                         "Audio 1 (lang:eng)", "Video 1 (lang:fre)"}));
  EXPECT_EQ(Carried(), (Numbers{1, 2, 3, 5, 9}));
  EXPECT_EQ(Streams(), (Numbers{2, 9, 1, 5, 3}));
  EXPECT_TRUE(m_filter->enabled.empty());
}

TEST_F(OutPinsCreator, PinsOfferTheirRecordsType) {
  Add({Video(1), Audio(2), Subtitle(3)});
  m_creator.CreatePinsForAllTracks();
  ASSERT_EQ(m_filter->pins.size(), 3u);
  for (const auto& pin : m_filter->pins) {
    CMediaType type;
    EXPECT_EQ(pin->GetMediaType(0, &type), S_OK);
    EXPECT_TRUE(type == Record(pin->Track().trackNumber).mediaType);
  }
}

TEST_F(OutPinsCreator, OnePinForEveryKind) {
  Add({Subtitle(1).Language("ger"), Audio(2), Audio(3).Language("ger"), Video(4), Video(5)});
  m_creator.CreatePinsByType();
  EXPECT_EQ(m_filter->PinNames(), (Names{"Video 0 (lang:eng)", "Audio 0 (lang:ger)", "Subtitle 0 (lang:ger)"}));
  EXPECT_EQ(Carried(), (Numbers{4, 3, 1}));
  EXPECT_EQ(Streams(), (Numbers{4, 5, 2, 3, 1, 6}));
}

TEST_F(OutPinsCreator, PlaceholderIsLastAndLooksLikeTheChosenSubtitles) {
  Add({Video(1), Unflagged(2), Subtitle(3).Language("ger").Private({5, 6})});
  m_creator.CreatePinsByType();
  const TrackPinInfo info = Record(4);
  EXPECT_EQ(info.trackType, 17u);
  EXPECT_TRUE(info.trackName == OLESTR("No Subtitles"));
  EXPECT_EQ(info.language, "");
  EXPECT_EQ(info.codecId, "");
  EXPECT_FALSE(info.defaultFlag);
  EXPECT_FALSE(info.forcedFlag);
  EXPECT_TRUE(info.mediaType == Record(3).mediaType);
  EXPECT_EQ(Streams(), (Numbers{1, 2, 3, 4}));
}

TEST_F(OutPinsCreator, SubtitlesWithoutFlagsStartSilent) {
  Add({Video(1), Unflagged(2).Language("ger"), Unflagged(3)});
  m_creator.CreatePinsByType();
  EXPECT_EQ(m_filter->enabled, Numbers{3});
  EXPECT_TRUE(Record(4).trackName == OLESTR("No Subtitles"));
}

TEST_F(OutPinsCreator, FlaggedSubtitlesStartVisible) {
  Add({Unflagged(1), Unflagged(2).Language("ger").Forced(true), Subtitle(3)});
  m_creator.CreatePinsByType();
  EXPECT_EQ(Carried(), Numbers{2});
  EXPECT_TRUE(m_filter->enabled.empty());
}

TEST_F(OutPinsCreator, NoSubtitlesNoPlaceholder) {
  Add({Video(1), Audio(2)});
  m_creator.CreatePinsByType();
  EXPECT_EQ(Streams(), (Numbers{1, 2}));
}

TEST_F(OutPinsCreator, PlaceholderOvertakesNoTrackOfTheFile) {
  Add({Video(1), Unflagged(3), Unflagged(4)});
  m_creator.CreatePinsByType();
  EXPECT_EQ(Record(4).codecId, "S_TEXT/UTF8");
  EXPECT_TRUE(Record(5).trackName == OLESTR("No Subtitles"));
  EXPECT_EQ(m_filter->enabled, Numbers{3});
}

TEST_F(OutPinsCreator, SilentStartFindsThePlaceholderBelowHigherNumbers) {
  Add({Video(1), Unflagged(10)});
  m_creator.CreatePinsByType();
  EXPECT_EQ(Streams(), (Numbers{1, 3, 10}));
  EXPECT_EQ(m_filter->enabled, Numbers{1});
}

TEST_F(OutPinsCreator, FirstTrackWithThePlaceholdersNameIsDropped) {
  Add({Audio(1).Name("No Subtitles"), Subtitle(2).Name("No Subtitles"), Subtitle(3).Name("No Subtitles ")});
  m_creator.CreatePinsForAllTracks();
  EXPECT_EQ(Carried(), (Numbers{2, 3}));
}

TEST_F(OutPinsCreator, SecondCreationStartsOver) {
  Add({Video(1), Subtitle(2)});
  m_creator.CreatePinsByType();
  m_creator.CreatePinsByType();
  EXPECT_EQ(Streams(), (Numbers{1, 2, 3}));
  m_filter->pins.clear();
  m_creator.CreatePinsForAllTracks();
  EXPECT_EQ(m_filter->PinNames(), (Names{"Video 0 (lang:eng)", "Subtitle 0 (lang:eng)"}));
  EXPECT_EQ(Streams(), (Numbers{1, 2}));
}

TEST_F(OutPinsCreator, UnknownUserLanguageFallsBackToFlags) {
  OverrideUserLanguageForTests("Klingonese");
  Add({Audio(1).Language("ger").Default(false), Audio(2).Language("").Default(false), Audio(3)});
  m_creator.CreatePinsByType();
  EXPECT_EQ(Carried(), Numbers{3});
}

TEST_F(OutPinsCreator, UnknownStreamsAndTracksLeaveTheRecordAlone) {
  Add({Video(1)});
  m_creator.CreatePinsByType();
  TrackPinInfo info;
  info.codecId = "untouched";
  EXPECT_FALSE(m_creator.GetTrackInfoByIndex(1, info));
  EXPECT_FALSE(m_creator.GetTrackInfoByNumber(2, info));
  EXPECT_EQ(info.codecId, "untouched");
}

TEST_F(OutPinsCreator, ClearForgetsTracksAndStreams) {
  Add({Video(1), Subtitle(2)});
  m_creator.CreatePinsByType();
  EXPECT_TRUE(m_creator.HasVideo());
  const TrackPinInfo copy = Record(2);
  m_creator.Clear();
  EXPECT_EQ(m_creator.GetStreamCount(), 0u);
  EXPECT_FALSE(m_creator.HasVideo());
  EXPECT_EQ(copy.mediaType.FormatLength(), 520u);
  EXPECT_EQ(Carried(), (Numbers{1, 2}));
}

TEST_F(OutPinsCreator, FailureWhileAppendingKeepsTheEarlierPins) {
  Add({Video(1), Audio(2), Subtitle(3)});
  m_filter->refuseAfter = 1;
  EXPECT_THROW(m_creator.CreatePinsByType(), std::bad_alloc);
  EXPECT_EQ(Carried(), Numbers{1});
  m_filter->pins.clear();
  m_filter->refuseAfter = 1000;
  m_creator.CreatePinsByType();
  EXPECT_EQ(m_filter->PinNames(), (Names{"Video 0 (lang:eng)", "Audio 0 (lang:eng)", "Subtitle 0 (lang:eng)"}));
}

}  // namespace
}  // namespace tarvex::test
