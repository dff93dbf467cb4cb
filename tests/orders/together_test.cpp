// Pictures and sound of one playing graph stay together whatever is done to it: seeks, pauses, a switch of the stream
// that a connected pin carries, questions in between.
#include "tests/orders/orders_fixture.h"

namespace tarvex::test {
namespace {

class Together : public OrdersTest {
 protected:
  /// The last segment of each sink is one and the same, and what is shown first of each is at most a picture apart.
  void ExpectTogether(SinkFilter& sound, std::uint64_t soundTrack) {
    const auto pictures = ShownSegmentOf(Graph().Sink(0));
    const auto heard = ShownSegmentOf(sound);
    EXPECT_EQ(pictures.front().start, heard.front().start) << "two segments";
    EXPECT_EQ(pictures.front().stop, heard.front().stop);
    EXPECT_EQ(pictures.front().rate, heard.front().rate);
    const auto picture = std::ranges::find_if(pictures, IsShown);
    const auto first = std::ranges::find_if(heard, IsShown);
    EXPECT_EQ(picture->start, picture->origin.time - pictures.front().start);
    EXPECT_EQ(first->start, first->origin.time - pictures.front().start);
    EXPECT_EQ(first->origin.track, soundTrack);
    EXPECT_LE(std::abs(picture->origin.time - first->origin.time), kPictureTime);
  }
  void Forget() {
    for (const auto& sink : Graph().Sinks()) sink->Clear();
  }
};

TEST_F(Together, AfterSeeksPausesAndRuns) {
  OpenFilm({.seconds = 60, .pictures = 2000000, .sound = 192000, .keyFrameEvery = 2000}, SinkKind::kSlow);
  REFERENCE_TIME wanted = 0;
  for (int step = 0; step < 12; ++step) {
    SCOPED_TRACE(step);
    ASSERT_EQ(Seek(wanted), S_OK);
    EXPECT_TRUE(SUCCEEDED(Graph().Run()));
    ExpectTogether(Graph().Sink(1), 2);
    wanted = (wanted + 17 * kSecond + 130 * kMillisecond) % (50 * kSecond);
    if (step % 3 == 1) Graph().Pause();
    if (step % 3 == 2) ExpectQuickStop();
    Forget();
  }
}

// The range that is played is open until somebody asks for it. What the first sound has before the second begins is
// more than its ring holds, so that the second begins only after the question.
TEST_F(Together, OneRangeForAllPinsWhoeverAsksInBetween) {
  Open(MakeFilm({.seconds = 8, .pictures = 1000, .sound = 4000000, .sounds = 2, .lastSoundFrom = 5000}));
  const auto seeking = QueryFor<IMediaSeeking>(Output(1).Get());
  for (const std::size_t sound : {1U, 2U}) {
    ASSERT_EQ(Graph().ConnectSink(Output(sound).Get(), SinkKind::kCounting), S_OK);
  }
  Graph().Sink(0).OnSample([&](IMediaSample* /*sample*/) {
    LONGLONG start = 0;
    LONGLONG stop = 0;
    EXPECT_EQ(seeking->GetPositions(&start, &stop), S_OK);
    EXPECT_EQ(seeking->SetRate(2.0), S_OK);
  });
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().WaitForEnd());
  ExpectQuickStop();
  const SinkEvent first = Graph().Sink(0).Events().front();
  const SinkEvent second = Graph().Sink(1).Events().front();
  EXPECT_TRUE(first.stop == second.stop && first.rate == second.rate);
}

TEST_F(Together, ASwitchedStreamComesFromWhereItWas) {
  constexpr REFERENCE_TIME kWanted = 12 * kSecond;
  constexpr LONG kSecondSound = 2;
  for (const FILTER_STATE wanted : {State_Stopped, State_Paused, State_Running}) {
    SCOPED_TRACE(wanted);
    OpenFilm({.seconds = 60, .pictures = 2000000, .sound = 192000, .sounds = 2, .keyFrameEvery = 2000},
             SinkKind::kSlow);
    const auto spare = SinkFilter::Create(SinkKind::kSlow);
    ASSERT_EQ(Graph().Graph()->AddFilter(spare.Get(), OLESTR("Spare sink")), S_OK);
    ASSERT_EQ(Seek(kWanted), S_OK);
    if (wanted != State_Stopped) {
      ASSERT_TRUE(SUCCEEDED(wanted == State_Paused ? Graph().Pause() : Graph().Run()));
      ExpectTogether(Graph().Sink(1), 2);
    }
    Forget();
    ASSERT_EQ(Ask<IAMStreamSelect>()->Enable(kSecondSound, AMSTREAMSELECTENABLE_ENABLE), S_OK);
    OAFilterState state = State_Stopped;
    EXPECT_TRUE(SUCCEEDED(QueryFor<IMediaControl>(Graph().Graph())->GetState(static_cast<LONG>(kPatience), &state)));
    EXPECT_EQ(state, wanted);
    EXPECT_FALSE(IsConnected(Graph().Sink(1).Pin())) << "the old stream's renderer is still connected";
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ExpectTogether(*spare, 3);
    const REFERENCE_TIME start = LastSegmentOf(*spare).front().start;
    EXPECT_GE(start, kWanted - kPictureTime);
    EXPECT_LE(start, kWanted + 10 * kSecond);
    ExpectQuickStop();
    spare->Pin()->Disconnect();
    Graph().Graph()->RemoveFilter(spare.Get());
  }
}

}  // namespace
}  // namespace tarvex::test
