// Which stream, chapter and action a user means by an option or a key.
#include <gtest/gtest.h>

#include "host/report/stream_choice.h"
#include "host/system/player_key.h"

namespace tarvex::host {
namespace {

const std::vector<StreamReport> kStreams = {
    {kVideoGroup, "V:  [German]", true, false},    {kAudioGroup, "A: [draft] Commentary [French]", false, false},
    {kAudioGroup, "A: German", true, false},       {kAudioGroup, "A:  [German]", false, false},
    {kSubtitleGroup, "S:  [German]", true, false}, {kSubtitleGroup, "No Subtitles", false, false},
};

TEST(StreamChoice, WishesAreUnderstood) {
  using Wishes = std::vector<std::pair<const char*, std::optional<std::uint32_t>>>;
  const Wishes sound = {{"1", 1},      {"3", 3},    {"0", {}},  {"4", {}},  {"4294967297", {}},
                        {"german", 3}, {"GER", 3},  {"deu", 3}, {"fre", 1}, {"draft", {}},
                        {"eng", {}},   {"off", {}}, {"", {}}};
  for (const auto& [wish, index] : sound) EXPECT_EQ(FindStream(kStreams, kAudioGroup, wish), index) << wish;
  const Wishes subtitles = {{"off", 5}, {"2", 5}, {"Deu", 4}};
  for (const auto& [wish, index] : subtitles) EXPECT_EQ(FindStream(kStreams, kSubtitleGroup, wish), index) << wish;
}

// A key takes the next one; what a terminal would show is tried by nothing else.
TEST(StreamChoice, SteppingGoesRound) {
  std::vector<StreamReport> streams = kStreams;
  EXPECT_EQ(NextStream(streams, kAudioGroup), 3u);
  std::swap(streams[2].enabled, streams[3].enabled);
  EXPECT_EQ(NextStream(streams, kAudioGroup), 1u);
  EXPECT_EQ(NextStream(streams, kVideoGroup), std::nullopt);
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
