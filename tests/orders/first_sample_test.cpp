// A paused renderer keeps its first sample and takes no other, and the graph waits until every renderer has one. So
// whatever is held back for a start, no pin may keep another one from its first sample.
#include <string>
#include <vector>

#include "tests/orders/orders_fixture.h"

namespace tarvex::test {
namespace {

struct Pictures {
  const char* name;
  std::uint32_t rate;  // bytes a second
  bool still;
};
constexpr Pictures kPictures[] = {
    {"1Mbit", 125000, false},   {"8Mbit", 1000000, false}, {"24Mbit", 3000000, false},
    {"60Mbit", 7500000, false}, {"Still", 2500000, true},
};
struct Sound {
  const char* name;
  std::uint32_t rate;
};
constexpr Sound kSounds[] = {
    {"Aac", 24000}, {"Ac3", 80000}, {"Flac", 120000}, {"Pcm51At96kHz", 1728000}, {"Pcm71At192kHz", 4608000},
};
constexpr std::uint32_t kKeyFrames[] = {1000, 5000, 10000, 0};  // milliseconds apart; 0: one only

constexpr std::uint32_t kMostBytes = 96000000;
constexpr std::uint32_t kLongest = 900;  // seconds

using BadlyInterleaved = OrdersTest;

class FirstSample : public OrdersTest, public testing::WithParamInterface<Pictures> {};

TEST_P(FirstSample, ReachesEveryPausedRenderer) {
  const Pictures& pictures = GetParam();
  for (const Sound& sound : kSounds) {
    for (const std::uint32_t keyFrames : kKeyFrames) {
      if (pictures.still && keyFrames != 0) continue;
      SCOPED_TRACE(std::string(sound.name) + ", key frames " + std::to_string(keyFrames));
      const std::uint32_t rate = sound.rate + (pictures.still ? 0 : pictures.rate);
      OpenFilm({.seconds = std::min(kLongest, kMostBytes / rate),
                .pictures = pictures.rate,
                .sound = sound.rate,
                .keyFrameEvery = keyFrames,
                .still = pictures.still},
               SinkKind::kBlocking);
      ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
      ASSERT_TRUE(EverySinkHasASample());
      for (const auto& sink : Graph().Sinks()) EXPECT_EQ(sink->Samples().front().start, 0);
      ExpectQuickStop();
      EXPECT_FALSE(IsAborted());
    }
  }
}

// More sound than its ring holds lies in front of the first picture.
TEST_F(BadlyInterleaved, PicturesArriveThoughSoundFillsItsRing) {
  OpenFilm({.seconds = 10, .pictures = 25000, .sound = 4000000, .picturesLag = 4000}, SinkKind::kBlocking);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  EXPECT_TRUE(EverySinkHasASample());
  ExpectQuickStop();
}

INSTANTIATE_TEST_SUITE_P(Pictures, FirstSample, testing::ValuesIn(kPictures),
                         [](const auto& pictures) { return std::string(pictures.param.name); });

}  // namespace
}  // namespace tarvex::test
