// Pictures and sound of one playing graph stay together whatever is done to it: seeks, pauses, a switch of the stream
// that a connected pin carries, questions in between.
#include <string>
#include <vector>

#include "framework/thread.h"
#include "tests/orders/arrivals.h"
#include "tests/orders/orders_fixture.h"

namespace tarvex::test {
namespace {

constexpr std::uint64_t kPictures = 1;
constexpr std::uint64_t kFirstSound = 2;
constexpr std::uint64_t kSecondSound = 3;

class Together : public OrdersTest {
 protected:
  void OpenWatched(const FilmShape& shape) {
    OpenFilm(shape, SinkKind::kSlow);
    m_pictures.Watch(Graph().Sink(0));
    m_sound.Watch(Graph().Sink(1));
  }

  /// What is shown first of each kind: the file's times are at most a frame apart, and the clock's are the same.
  void ExpectTogether(std::uint64_t soundTrack) {
    ASSERT_TRUE(m_pictures.WaitUntilShown(kPatience));
    ASSERT_TRUE(m_sound.WaitUntilShown(kPatience));
    const Arrival picture = FirstShown(m_pictures, kPictures);
    const Arrival sound = FirstShown(m_sound, soundTrack);
    EXPECT_EQ(picture.origin.time - picture.start, sound.origin.time - sound.start) << "two segments";
    EXPECT_LE(std::abs(picture.origin.time - sound.origin.time), kPictureTime);
  }
  static Arrival FirstShown(Arrivals& arrivals, std::uint64_t track) {
    Arrival first;
    for (const Arrival& each : arrivals.All()) {
      EXPECT_EQ(each.origin.track, track);
      if (first.stop <= 0) first = each;
    }
    return first;
  }
  void Forget() {
    m_pictures.Forget();
    m_sound.Forget();
  }
  static std::vector<SinkEvent> SegmentsOf(CSinkFilter& sink) {
    std::vector<SinkEvent> events = sink.Events();
    std::erase_if(events, [](const SinkEvent& event) { return event.kind != SinkEvent::Kind::kNewSegment; });
    return events;
  }

  Arrivals m_pictures;
  Arrivals m_sound;
};

TEST_F(Together, AfterSeeksPausesAndRuns) {
  OpenWatched({.seconds = 60, .pictures = 2000000, .sound = 192000, .keyFrameEvery = 2000});
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ExpectTogether(kFirstSound);
  REFERENCE_TIME wanted = 0;
  for (int step = 0; step < 12; ++step) {
    SCOPED_TRACE(step);
    wanted = (wanted + 17 * kSecond + 130 * kMillisecond) % (50 * kSecond);
    if (step % 3 == 1) {
      EXPECT_TRUE(SUCCEEDED(Graph().Pause()));
    }
    if (step % 3 == 2) ExpectQuickStop();
    Forget();
    ASSERT_EQ(Seek(wanted), S_OK);
    EXPECT_TRUE(SUCCEEDED(Graph().Run()));
    ExpectTogether(kFirstSound);
  }
  ExpectQuickStop();
}

// The range that is played is open until somebody asks for it. What the first sound has before the second begins is
// more than its ring holds, so that the second begins only after the question.
TEST_F(Together, OneRangeForAllPinsWhoeverAsksInBetween) {
  Open(MakeFilm({.seconds = 8, .pictures = 1000, .sound = 4000000, .sounds = 2, .lastSoundFrom = 5000}));
  const ComPtr<IPin> pin = Output(1);
  ASSERT_EQ(Graph().ConnectSink(pin.Get(), SinkKind::kCounting), S_OK);
  ASSERT_EQ(Graph().ConnectSink(Output(2).Get(), SinkKind::kCounting), S_OK);
  Graph().Sink(0).OnSample([&](IMediaSample* /*sample*/) {
    LONGLONG start = 0;
    LONGLONG stop = 0;
    EXPECT_EQ(QueryFor<IMediaSeeking>(pin.Get())->GetPositions(&start, &stop), S_OK);
    EXPECT_EQ(QueryFor<IMediaSeeking>(pin.Get())->SetRate(2.0), S_OK);
  });
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().WaitForEnd());
  ExpectQuickStop();
  const auto first = SegmentsOf(Graph().Sink(0));
  const auto second = SegmentsOf(Graph().Sink(1));
  ASSERT_EQ(first.size(), 1U);
  ASSERT_EQ(second.size(), 1U);
  EXPECT_EQ(first.front().stop, second.front().stop);
  EXPECT_EQ(first.front().rate, second.front().rate);
}

class Switched : public Together, public testing::WithParamInterface<FILTER_STATE> {};

TEST_P(Switched, TheNewStreamComesFromWhereItWas) {
  constexpr REFERENCE_TIME kWanted = 12 * kSecond;
  constexpr LONG kSecondSoundIndex = 2;
  OpenWatched({.seconds = 60, .pictures = 2000000, .sound = 192000, .sounds = 2, .keyFrameEvery = 2000});
  const auto sink = CSinkFilter::Create(SinkKind::kSlow);
  ASSERT_EQ(Graph().Graph()->AddFilter(sink.Get(), OLESTR("Spare sink")), S_OK);
  ASSERT_EQ(Seek(kWanted), S_OK);
  if (GetParam() != State_Stopped) {
    ASSERT_TRUE(SUCCEEDED(GetParam() == State_Paused ? Graph().Pause() : Graph().Run()));
    ExpectTogether(kFirstSound);
  }
  m_sound.Watch(*sink);
  Graph().Sink(1).OnSample(nullptr);
  Forget();

  ASSERT_EQ(QueryFor<IAMStreamSelect>(Graph().Splitter())->Enable(kSecondSoundIndex, AMSTREAMSELECTENABLE_ENABLE),
            S_OK);
  OAFilterState state = State_Stopped;
  EXPECT_TRUE(SUCCEEDED(QueryFor<IMediaControl>(Graph().Graph())->GetState(static_cast<LONG>(kPatience), &state)));
  EXPECT_EQ(state, GetParam());
  EXPECT_FALSE(IsConnected(Graph().Sink(1).Pin())) << "the old stream's renderer is still connected";
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(m_pictures.WaitUntilShown(kPatience));
  ASSERT_TRUE(m_sound.WaitUntilShown(kPatience));
  const Arrival first = FirstShown(m_sound, kSecondSound);
  EXPECT_GE(first.origin.time, kWanted - kPictureTime);
  EXPECT_LE(first.origin.time, kWanted + 10 * kSecond);
  const auto segments = SegmentsOf(*sink);
  ASSERT_FALSE(segments.empty());
  EXPECT_EQ(segments.back().start, first.origin.time - first.start);
  EXPECT_EQ(SegmentsOf(Graph().Sink(0)).back().start, segments.back().start);
  ExpectQuickStop();
  sink->Pin()->Disconnect();
  Graph().Graph()->RemoveFilter(sink.Get());
}

INSTANTIATE_TEST_SUITE_P(
    States, Switched, testing::Values(State_Stopped, State_Paused, State_Running), [](const auto& state) {
      return std::string(state.param == State_Stopped ? "Stopped" : state.param == State_Paused ? "Paused" : "Running");
    });

}  // namespace
}  // namespace tarvex::test
