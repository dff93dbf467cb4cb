// Where a seek leads in films of a high rate with key frames far apart: more has to be held than there is room for,
// and still the segment starts at the picture that is shown at the wanted time, or at that time itself.
#include <vector>

#include "tests/orders/orders_fixture.h"

namespace tarvex::test {
namespace {

std::vector<FilmShape> Films() {
  std::vector<FilmShape> films;
  for (const std::uint32_t megabits : {12U, 30U, 40U, 100U, 200U}) {
    for (const std::uint32_t every : {2000U, 5000U, 10000U, 20000U}) {
      films.push_back({.seconds = 50, .pictures = megabits * 125000, .sound = 192000, .keyFrameEvery = every});
    }
  }
  return films;
}

using SegmentStart = OrdersTest;

TEST_F(SegmentStart, IsWhereItWasWanted) {
  for (const FilmShape& film : Films()) {
    for (const REFERENCE_TIME wanted :
         {REFERENCE_TIME{0}, 20 * kMillisecond, kSecond, 15 * kSecond, 19970 * kMillisecond, 20 * kSecond,
          41015 * kMillisecond, 49900 * kMillisecond}) {
      SCOPED_TRACE(testing::Message() << film.pictures << " bytes/s, keys " << film.keyFrameEvery << ", at " << wanted);
      OpenFilm(film, SinkKind::kCounting);
      ASSERT_EQ(Seek(wanted), S_OK);
      ASSERT_TRUE(SUCCEEDED(Graph().Run()));
      for (const auto& sink : Graph().Sinks()) ShownSegmentOf(*sink);
      ExpectQuickStop();
      const auto pictures = LastSegmentOf(Graph().Sink(0));
      const REFERENCE_TIME origin = pictures.front().start;
      EXPECT_TRUE(origin == wanted || origin == wanted / kPictureTime * kPictureTime) << origin;
      EXPECT_EQ(pictures.at(1).origin.time % (film.keyFrameEvery * kMillisecond), 0) << "a decoder starts at a key";
      EXPECT_TRUE(pictures.at(1).key && pictures.at(1).discontinuity);
      for (const auto& sink : Graph().Sinks()) {
        const auto segment = LastSegmentOf(*sink);
        EXPECT_EQ(segment.front().start, origin);
        for (auto sample = segment.begin() + 1; sample != segment.end(); ++sample) {
          if (sample->kind != SinkEvent::Kind::kSample) continue;
          EXPECT_EQ(sample->start, sample->origin.time - origin);
          EXPECT_EQ(sample->preroll, sample->stop < 0);
          EXPECT_TRUE(sample->origin.track == 1 || sample->stop >= 0) << "sound that nobody hears";
        }
      }
    }
  }
}

}  // namespace
}  // namespace tarvex::test
