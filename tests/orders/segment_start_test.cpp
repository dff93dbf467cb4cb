// Where a seek leads in films of a high rate with key frames far apart: more has to be held than there is room for,
// and still the segment starts at the picture that is shown at the wanted time, or at that time itself.
#include <string>

#include "tests/orders/arrivals.h"
#include "tests/orders/orders_fixture.h"

namespace tarvex::test {
namespace {

class SegmentStart : public OrdersTest, public testing::WithParamInterface<std::uint32_t> {
 protected:
  static REFERENCE_TIME SegmentOf(CSinkFilter& sink) {
    for (const SinkEvent& event : sink.Events()) {
      if (event.kind == SinkEvent::Kind::kNewSegment) return event.start;
    }
    return -1;
  }
  void ExpectSegment(REFERENCE_TIME wanted) {
    Arrivals pictures;
    Arrivals sound;
    pictures.Watch(Graph().Sink(0));
    sound.Watch(Graph().Sink(1));
    ASSERT_EQ(Seek(wanted), S_OK);
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ASSERT_TRUE(pictures.WaitUntilShown(kPatience));
    ASSERT_TRUE(sound.WaitUntilShown(kPatience));
    ExpectQuickStop();
    const REFERENCE_TIME origin = SegmentOf(Graph().Sink(0));
    EXPECT_EQ(SegmentOf(Graph().Sink(1)), origin);
    EXPECT_TRUE(origin == wanted || origin == wanted / kPictureTime * kPictureTime) << origin;
    for (const Arrival& each : pictures.All()) {
      EXPECT_EQ(each.start, each.origin.time - origin);
      EXPECT_EQ(each.preroll, each.stop < 0);
    }
    for (const Arrival& each : sound.All()) {
      EXPECT_EQ(each.start, each.origin.time - origin);
      EXPECT_GE(each.stop, 0) << "sound that nobody hears";
    }
    EXPECT_EQ(pictures.All().front().origin.time % (GetParam() * kMillisecond), 0) << "a decoder starts at a key frame";
  }
};

TEST_P(SegmentStart, IsWhereItWasWanted) {
  for (const std::uint32_t megabits : {12U, 30U, 40U, 100U, 200U}) {
    const FilmShape shape{.seconds = 50, .pictures = megabits * 125000, .sound = 192000, .keyFrameEvery = GetParam()};
    for (const REFERENCE_TIME wanted :
         {REFERENCE_TIME{0}, 20 * kMillisecond, kSecond, 15 * kSecond, 19970 * kMillisecond, 20 * kSecond,
          41015 * kMillisecond, 49900 * kMillisecond}) {
      SCOPED_TRACE(std::to_string(megabits) + " Mbit/s, wanted " + std::to_string(wanted / kMillisecond));
      OpenFilm(shape, SinkKind::kCounting);
      ExpectSegment(wanted);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(KeyFrameEvery, SegmentStart, testing::Values(2000, 5000, 10000, 20000),
                         [](const auto& milliseconds) { return std::to_string(milliseconds.param) + "ms"; });

}  // namespace
}  // namespace tarvex::test
