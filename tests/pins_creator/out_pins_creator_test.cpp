// Pin creation by kind: which stream a pin carries, the list that stream selection counts, and the entry
// for no subtitles. What all tracks together give is the corpus's matter.
#include "pins/creator/out_pins_creator.h"

#include <gtest/gtest.h>

#include "tests/pins_creator/fake_splitter.h"
#include "tests/pins_creator/track_builder.h"

namespace tarvex::test {
namespace {

TrackBuilder Video(std::uint64_t number) { return TrackBuilder(number, 1, "V_VP8").Size(16, 16); }
TrackBuilder Audio(std::uint64_t number) { return {number, 2, "A_AC3"}; }
TrackBuilder Subtitle(std::uint64_t number) { return {number, 17, "S_TEXT/UTF8"}; }
TrackBuilder Unflagged(std::uint64_t number) { return Subtitle(number).Default(0); }

using Numbers = std::vector<std::uint32_t>;
using Tracks = std::vector<TrackBuilder>;

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

  void Add(const Tracks& tracks) {
    for (const TrackBuilder& track : tracks) m_creator.CreatePin(track);
  }
  // Drops what there is first.
  void CreateByType(const Tracks& tracks) {
    m_creator.Clear();
    m_filter->pins.clear();
    m_filter->enabled.clear();
    Add(tracks);
    m_creator.CreatePinsByType();
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

TEST_F(OutPinsCreator, OnePinForEveryKind) {
  const struct {
    const char* what;
    Tracks tracks;
    Numbers carried;
    Numbers streams;  // the highest number is the entry for no subtitles, when there is one
    Numbers enabled;
  } cases[] = {
      {"the user's language",
       {Subtitle(1).Language("ger"), Audio(2), Audio(3).Language("ger"), Video(4), Video(5)},
       {4, 3, 1},
       {4, 5, 2, 3, 1, 6},
       {}},
      {"no subtitles", {Video(1), Audio(2)}, {1, 2}, {1, 2}, {}},
      {"subtitles without flags start silent",
       {Video(1), Unflagged(2).Language("ger"), Unflagged(3)},
       {1, 2},
       {1, 2, 3, 4},
       {3}},
      {"silent below a higher number", {Video(1), Unflagged(10)}, {1, 10}, {1, 3, 10}, {1}},
      {"a forced flag of any value but zero",
       {Unflagged(1), Unflagged(2).Language("ger").Forced(std::uint64_t{1} << 40), Subtitle(3)},
       {2},
       {1, 2, 3, 4},
       {}},
      {"a number that is known keeps its record", {Audio(4).Language("ger"), Audio(4)}, {4}, {4}, {}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    CreateByType(each.tracks);
    EXPECT_EQ(Carried(), each.carried);
    EXPECT_EQ(Streams(), each.streams);
    EXPECT_EQ(m_filter->enabled, each.enabled);
  }
  EXPECT_EQ(Record(4).language, "ger");
}

// Each of these beats those before it; the first two are equals.
TEST_F(OutPinsCreator, LanguageBeatsDefaultAndForcedBeatsBoth) {
  const Tracks better = {Unflagged(1),          Unflagged(2).Forced(1),
                         Subtitle(3),           Unflagged(4).Language("ger"),
                         Subtitle(5).Forced(1), Unflagged(6).Language("ger").Forced(1)};
  for (std::uint32_t count = 2; count <= better.size(); ++count) {
    CreateByType(Tracks(better.begin(), better.begin() + count));
    EXPECT_EQ(Carried(), Numbers{count == 2 ? 1 : count});
  }
}

TEST_F(OutPinsCreator, LanguagesAreComparedExactly) {
  CreateByType(
      {Unflagged(1), Unflagged(2).Language("GER"), Unflagged(3).Language("ger-AT"), Unflagged(4).Language("deu")});
  EXPECT_EQ(Carried(), Numbers{1});
}

TEST_F(OutPinsCreator, AllTracksAreCountedByKind) {
  Add({Video(2), Audio(1), Video(9), Subtitle(3), Audio(5)});
  m_creator.CreatePinsForAllTracks();
  EXPECT_EQ(Carried(), (Numbers{1, 2, 3, 5, 9}));
  EXPECT_EQ(Streams(), (Numbers{2, 9, 1, 5, 3}));
  EXPECT_TRUE(m_filter->enabled.empty());
}

TEST_F(OutPinsCreator, PlaceholderLooksLikeTheChosenSubtitles) {
  CreateByType({Video(1), Unflagged(2), Subtitle(3).Language("ger").Private("xy")});
  const TrackPinInfo info = Record(4);
  EXPECT_EQ(info.trackType, 17u);
  EXPECT_TRUE(info.trackName == OLESTR("No Subtitles"));
  EXPECT_EQ(info.language + info.codecId, "");
  EXPECT_FALSE(info.defaultFlag || info.forcedFlag);
  EXPECT_TRUE(info.mediaType == Record(3).mediaType);
}

TEST_F(OutPinsCreator, NameWidensOddLanguagesByteByByte) {
  Add({Audio(1).Language("\xE4\xFF")});
  m_creator.CreatePinsForAllTracks();
  EXPECT_TRUE(m_filter->pins.at(0)->Name() == OLESTR("Audio 0 (lang:\u00E4\u00FF)"));
}

TEST_F(OutPinsCreator, FirstTrackWithThePlaceholdersNameIsDropped) {
  Add({Audio(1).Name("No Subtitles"), Subtitle(2).Name("No Subtitles"), Subtitle(3).Name("No Subtitles ")});
  m_creator.CreatePinsForAllTracks();
  EXPECT_EQ(Carried(), (Numbers{2, 3}));
}

TEST_F(OutPinsCreator, UnknownUserLanguageFallsBackToFlags) {
  OverrideUserLanguageForTests("Klingonese");
  CreateByType({Audio(1).Language("ger").Default(0), Audio(2).Language("").Default(0), Audio(3)});
  EXPECT_EQ(Carried(), Numbers{3});
}

TEST_F(OutPinsCreator, FailureWhileAppendingCanBeTriedAgain) {
  m_filter->refuseAfter = 1;
  EXPECT_THROW(CreateByType({Video(1), Audio(2), Subtitle(3)}), std::bad_alloc);
  EXPECT_EQ(Carried(), Numbers{1});
  m_filter->pins.clear();
  m_filter->refuseAfter = 1000;
  m_creator.CreatePinsByType();
  EXPECT_EQ(Carried(), (Numbers{1, 2, 3}));
}

}  // namespace
}  // namespace tarvex::test
