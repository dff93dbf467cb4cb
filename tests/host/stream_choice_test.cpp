// Which stream, chapter and action a user means by a key, which no transcript shows.
#include <gtest/gtest.h>

#include "host/report/stream_choice.h"
#include "host/system/player_key.h"

namespace tarvex::host {
namespace {

TEST(StreamChoice, SteppingGoesRound) {
  std::vector<StreamReport> streams = {{kVideoGroup, "V", true, false},
                                       {kAudioGroup, "A", false, false},
                                       {kAudioGroup, "B", true, false},
                                       {kAudioGroup, "C", false, false}};
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
