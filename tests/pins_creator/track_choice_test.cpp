// The order of preference among tracks of a kind, and pin names.
#include "pins/creator/track_choice.h"

#include <gtest/gtest.h>

namespace tarvex::test {
namespace {

struct Candidate {
  const char* language;
  bool defaultFlag;
  bool forcedFlag;
};

// Numbers the candidates from 1 and answers the number of the one that is chosen, 0 for none.
std::uint32_t Choose(const std::vector<Candidate>& candidates, const char* preferred) {
  TrackMap tracks;
  for (const Candidate& candidate : candidates) {
    TrackPinInfo info;
    info.trackNumber = static_cast<std::uint32_t>(tracks.size() + 1);
    info.trackType = kTrackTypeSubtitle;
    info.language = candidate.language;
    info.defaultFlag = candidate.defaultFlag;
    info.forcedFlag = candidate.forcedFlag;
    tracks.emplace(info.trackNumber, info);
  }
  const TrackPinInfo* chosen = ChooseTrack(tracks, kTrackTypeSubtitle, preferred);
  return chosen == nullptr ? 0 : chosen->trackNumber;
}

constexpr Candidate kOther{"eng", false, false};
constexpr Candidate kOtherForced{"eng", false, true};
constexpr Candidate kDefault{"eng", true, false};
constexpr Candidate kLanguage{"ger", false, false};
constexpr Candidate kDefaultForced{"eng", true, true};
constexpr Candidate kLanguageForced{"ger", false, true};

TEST(ChooseTrack, EveryStepBeatsTheNext) {
  EXPECT_EQ(Choose({kOther, kOtherForced}, "ger"), 1u);
  EXPECT_EQ(Choose({kOther, kOtherForced, kDefault}, "ger"), 3u);
  EXPECT_EQ(Choose({kOther, kOtherForced, kDefault, kLanguage}, "ger"), 4u);
  EXPECT_EQ(Choose({kOther, kOtherForced, kDefault, kLanguage, kDefaultForced}, "ger"), 5u);
  EXPECT_EQ(Choose({kOther, kOtherForced, kDefault, kLanguage, kDefaultForced, kLanguageForced}, "ger"), 6u);
}

TEST(ChooseTrack, LowestNumberAmongEquals) {
  EXPECT_EQ(Choose({kDefault, kLanguage, kLanguage}, "ger"), 2u);
  EXPECT_EQ(Choose({kOther, kDefault, kDefault}, "ger"), 2u);
}

TEST(ChooseTrack, NoPreferenceMatchesNoLanguage) { EXPECT_EQ(Choose({kOther, {"", false, true}, kDefault}, ""), 3u); }

TEST(ChooseTrack, LanguagesAreComparedExactly) {
  EXPECT_EQ(Choose({kOther, {"GER", false, false}, {"ger-AT", false, false}, {"deu", false, false}}, "ger"), 1u);
}

TEST(ChooseTrack, OtherKindsDoNotCount) {
  TrackMap tracks;
  tracks[1].trackType = kTrackTypeAudio;
  EXPECT_EQ(ChooseTrack(tracks, kTrackTypeVideo, "eng"), nullptr);
  EXPECT_EQ(ChooseTrack(tracks, kTrackTypeAudio, "eng"), &tracks[1]);
}

TEST(PinName, NamesKindNumberAndLanguage) {
  EXPECT_TRUE(PinName(1, 0, "eng") == OLESTR("Video 0 (lang:eng)"));
  EXPECT_TRUE(PinName(2, 1, "ger") == OLESTR("Audio 1 (lang:ger)"));
  EXPECT_TRUE(PinName(17, 12, "") == OLESTR("Subtitle 12 (lang:)"));
}

TEST(PinName, OddBytesAreWidenedOneByOne) {
  EXPECT_TRUE(PinName(2, 0, "\xE4\xFF") == OLESTR("Audio 0 (lang:\u00E4\u00FF)"));
}

}  // namespace
}  // namespace tarvex::test
