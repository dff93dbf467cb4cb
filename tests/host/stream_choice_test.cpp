// Which stream, chapter and action a user means by an option or a key.
#include <gtest/gtest.h>

#include "host/report/stream_choice.h"
#include "host/system/player_key.h"

namespace tarvex::host {
namespace {

const std::vector<StreamReport> kStreams = {
    {kVideoGroup, "V:  [German]", true, false},
    {kAudioGroup, "A: [draft] Commentary [French]", false, false},
    {kAudioGroup, "A: German", true, false},
    {kAudioGroup, "A:  [German]", false, false},
    {kAudioGroup, "A: 7 [Greek, Modern (1453-)]", false, false},
    {kSubtitleGroup, "S:  [German]", true, false},
    {kSubtitleGroup, "No Subtitles", false, false},
};

TEST(StreamChoice, WishesAreUnderstood) {
  struct Case {
    std::uint32_t group = 0;
    const char* wish = nullptr;
    std::optional<std::uint32_t> index;
  };
  const Case cases[] = {
      {kAudioGroup, "1", 1},           {kAudioGroup, "4", 4},      {kAudioGroup, "0", {}},   {kAudioGroup, "5", {}},
      {kAudioGroup, "4294967297", {}}, {kAudioGroup, "german", 3}, {kAudioGroup, "GER", 3},  {kAudioGroup, "deu", 3},
      {kAudioGroup, "fre", 1},         {kAudioGroup, "draft", {}}, {kAudioGroup, "eng", {}}, {kAudioGroup, "off", {}},
      {kAudioGroup, "", {}},           {kSubtitleGroup, "off", 6}, {kSubtitleGroup, "2", 6}, {kSubtitleGroup, "Deu", 5},
      {kVideoGroup, "1", 0},
  };
  for (const Case& c : cases) EXPECT_EQ(FindStream(kStreams, c.group, c.wish), c.index) << c.wish;
}

TEST(StreamChoice, SteppingGoesRound) {
  std::vector<StreamReport> streams = kStreams;
  EXPECT_EQ(NextStream(streams, kAudioGroup), 3u);
  streams[2].enabled = false;
  streams[4].enabled = true;
  EXPECT_EQ(NextStream(streams, kAudioGroup), 1u);
  EXPECT_EQ(NextStream(streams, kVideoGroup), std::nullopt);
}

TEST(StreamChoice, NextChapterIsBehindThePosition) {
  const std::vector<MarkerReport> markers = {{"a", 0}, {"b", 2}, {"c", 2}, {"d", 1e300}};
  EXPECT_EQ(NextMarker(markers, 0), 1u);
  EXPECT_EQ(NextMarker(markers, 20'000'000), 3u);
  EXPECT_EQ(NextMarker({}, 0), std::nullopt);
}

TEST(PlayerKey, ALetterIsNotAnArrow) {
  EXPECT_EQ(PlayerKeyOf(0x27, 0), PlayerKey::kForward);
  EXPECT_EQ(PlayerKeyOf(0x25, 0), PlayerKey::kBack);
  EXPECT_EQ(PlayerKeyOf(0x25, u'%'), std::nullopt);
  EXPECT_EQ(PlayerKeyOf(0x53, u'S'), PlayerKey::kSubtitle);
  EXPECT_EQ(PlayerKeyOf(0x10, 0), std::nullopt);
}

}  // namespace
}  // namespace tarvex::host
