// A paused renderer keeps its first sample and takes no other, and the graph waits until every renderer has one. So
// whatever is held back for a start, no pin may keep another one from its first sample.
#include <vector>

#include "tests/orders/orders_fixture.h"

namespace tarvex::test {
namespace {

/// Seconds, so that a film of this rate does not become too large.
std::uint32_t Lasting(std::uint32_t rate) { return std::min(900U, 96000000 / rate); }

std::vector<FilmShape> Films() {
  // More sound than its ring holds lies in front of the first picture.
  std::vector<FilmShape> films = {{.seconds = 10, .pictures = 25000, .sound = 4000000, .picturesLag = 4000}};
  for (const std::uint32_t sound : {24000U, 80000U, 120000U, 1728000U, 4608000U}) {
    films.push_back({.seconds = Lasting(sound), .pictures = 2500000, .sound = sound, .still = true});
    for (const std::uint32_t pictures : {125000U, 1000000U, 3000000U, 7500000U}) {
      for (const std::uint32_t every : {1000U, 5000U, 10000U, 0U}) {
        films.push_back(
            {.seconds = Lasting(pictures + sound), .pictures = pictures, .sound = sound, .keyFrameEvery = every});
      }
    }
  }
  return films;
}

using FirstSample = OrdersTest;

TEST_F(FirstSample, ReachesEveryPausedRenderer) {
  for (const FilmShape& film : Films()) {
    SCOPED_TRACE(testing::Message() << film.pictures << ", sound " << film.sound << ", keys " << film.keyFrameEvery);
    OpenFilm(film, SinkKind::kBlocking);
    ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
    ASSERT_TRUE(EverySinkHasASample());
    for (const auto& sink : Graph().Sinks()) EXPECT_EQ(sink->Samples().front().start, 0);
    ExpectQuickStop();
    EXPECT_FALSE(IsAborted());
  }
}

}  // namespace
}  // namespace tarvex::test
