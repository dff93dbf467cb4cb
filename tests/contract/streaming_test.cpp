// The order of what reaches a sink: segments, samples, flushes and the end.
#include <atomic>

#include "framework/event.h"
#include "framework/thread.h"
#include "tests/contract/contract_fixture.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/log_capture.h"

namespace tarvex::test {
namespace {

using Kind = SinkEvent::Kind;

class Streaming : public OpenedTest {
 protected:
  static void WaitForThePass(LogCapture& log) {
    for (int k = 0; k < 500 && !log.Contains("CMatroskaSplitter::ThreadProc Process exit"); ++k) SleepMilliseconds(10);
  }
  void PlayToEnd() {
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ASSERT_TRUE(Graph().WaitForEnd());
  }
  // A segment, all samples, the end.
  static void ExpectOnePass(SinkFilter& sink, std::size_t frames) {
    const std::vector<SinkEvent> events = sink.Events();
    ASSERT_EQ(events.size(), frames + 2);
    EXPECT_EQ(events.front().kind, Kind::kNewSegment);
    EXPECT_EQ(events.front().start, 0);
    EXPECT_EQ(events.front().rate, 1.0);
    EXPECT_EQ(events[1].start, 0);
    EXPECT_TRUE(events[1].discontinuity);
    for (std::size_t k = 1; k <= frames; ++k) {
      ASSERT_EQ(events[k].kind, Kind::kSample);
      EXPECT_EQ(events[k].start, static_cast<REFERENCE_TIME>(k - 1) * 400000);
      EXPECT_EQ(events[k].stop - events[k].start, 400000);
      EXPECT_EQ(events[k].discontinuity, k == 1);
    }
    EXPECT_EQ(events.back().kind, Kind::kEndOfStream);
  }
};

TEST_F(Streaming, EveryRunIsOneSegmentItsSamplesAndOneEnd) {
  PlayToEnd();
  for (int run = 0; run < 2; ++run) {
    for (const auto& sink : Graph().Sinks()) {
      ExpectOnePass(*sink, 100);
      sink->Clear();
    }
    ASSERT_TRUE(SUCCEEDED(Graph().Stop()));
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ASSERT_TRUE(Graph().WaitForEnd());
  }
}

TEST_F(Streaming, RunAfterPauseDoesNotStartOverAndPicturesAreLogged) {
  LogCapture log(Splitter());
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  ASSERT_TRUE(Graph().WaitForEnd());
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  ASSERT_TRUE(SUCCEEDED(Graph().Stop()));
  for (const auto& sink : Graph().Sinks()) ExpectOnePass(*sink, 100);
  EXPECT_EQ(log.CountOf("DeliverFrameSample tStart: 0 tStop: 400000 splice: 1"), 1U) << "not for sound";
  EXPECT_EQ(log.CountOf("DeliverFrameSample tStart: 400000 tStop: 800000 splice: 1"), 1U);
  EXPECT_EQ(log.CountOf("CMatroskaOutputPin::Active"), 2U);
  EXPECT_EQ(log.CountOf("CMatroskaOutputPin::Inactive"), 2U);
}

// Paused, not run: a graph runs its filters one after another once they are paused, and would start this one again.
TEST_F(Streaming, AStopFromASinkReturns) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  Event stopped(Event::Mode::kManual);
  Graph().Sink(0).OnSample([&](IMediaSample* /*sample*/) {
    Splitter()->Stop();
    stopped.Set();
  });
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  EXPECT_TRUE(stopped.Wait(kPatience));
  EXPECT_EQ(StateOf(Splitter()), State_Stopped);
}

TEST_F(Streaming, AFlushFromUpstreamReachesEverySinkAndNothingComesInBetween) {
  OpenMovie({.videos = 1, .audios = 1, .frames = 2000});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kSlow), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().Sink(0).WaitForSample(kPatience));
  ASSERT_EQ(Graph().InputPin()->BeginFlush(), S_OK);
  SleepMilliseconds(50);
  ASSERT_EQ(Graph().InputPin()->EndFlush(), S_OK);
  for (const auto& sink : Graph().Sinks()) {
    bool flushing = false;
    for (const SinkEvent& event : sink->Events()) {
      if (event.kind == Kind::kEndFlush) flushing = false;
      EXPECT_FALSE(flushing && event.kind != Kind::kEndFlush)
          << "in the middle of a flush: " << static_cast<int>(event.kind);
      if (event.kind == Kind::kBeginFlush) flushing = true;
    }
    EXPECT_FALSE(flushing);
    EXPECT_EQ(sink->CountOf(Kind::kEndFlush), 1U);
  }
}

TEST_F(Streaming, AnEndFromUpstreamIsPassedOnOnce) {
  PlayToEnd();
  EXPECT_EQ(Graph().InputPin()->EndOfStream(), S_OK);
  for (const auto& sink : Graph().Sinks()) EXPECT_EQ(sink->CountOf(Kind::kEndOfStream), 1U);
}

TEST_F(Streaming, AnEndFromUpstreamEndsWhatIsBeingDelivered) {
  OpenMovie({.videos = 1, .audios = 1, .frames = 400, .frameSize = 60000});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_EQ(Graph().InputPin()->EndOfStream(), S_OK);
  EXPECT_TRUE(Graph().WaitForEnd());
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  for (const auto& sink : Graph().Sinks()) EXPECT_EQ(sink->CountOf(Kind::kEndOfStream), 1U);
}

// The first read of a pass is the worker's own, later ones come from the thread that reads ahead.
TEST_F(Streaming, AnEndFromUpstreamInsideAReadHoldsNobodyUp) {
  for (const int read : {1, 2, 5, 8}) {
    SCOPED_TRACE(read);
    std::atomic<int> left{0};
    m_graph.emplace();
    m_source = SourceFilter::FromBytes(MakeMovie({.videos = 1, .audios = 1, .frames = 400, .frameSize = 60000}));
    m_source->BeforeEachCall([&] { return left > 0 && --left == 0 ? Graph().InputPin()->EndOfStream() : S_OK; });
    ASSERT_EQ(Graph().Open(m_source.Get()), S_OK);
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
    left = read;
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    EXPECT_TRUE(Graph().WaitForEnd());
    for (const auto& sink : Graph().Sinks()) EXPECT_EQ(sink->CountOf(Kind::kEndOfStream), 1U);
    LONGLONG start = 0;
    const auto seeking = QueryFor<IMediaSeeking>(Graph().OutputPins().front().Get());
    left = read;
    EXPECT_EQ(seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning), S_OK);
    for (const auto& sink : Graph().Sinks()) {
      for (int k = 0; k < 1000 && sink->CountOf(Kind::kEndOfStream) < 2; ++k) SleepMilliseconds(10);
      EXPECT_EQ(sink->CountOf(Kind::kEndOfStream), 2U) << "it does not play after a seek";
    }
    EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  }
}

TEST_F(Streaming, ASinkThatRefusesIsNotAskedAgainAndEndsThePass) {
  OpenMovie({.videos = 0, .audios = 1, .frames = 400, .frameSize = 60000});
  LogCapture log(Graph().Splitter());
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kRefusing), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  WaitForThePass(log);
  EXPECT_TRUE(log.Contains("CMatroskaSplitter::OnData failed")) << log.Joined();
  EXPECT_TRUE(log.Contains("CMatroskaVideoPin::OnData 8004022b")) << log.Joined();
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Graph().Sink(0).Samples().size(), 1U);
  EXPECT_EQ(Graph().Sink(0).CountOf(Kind::kEndOfStream), 0U);
}

// More sound than its ring can take is held until the second key frame comes. Where the sound is refused before the
// pictures went, they are lost, and what comes behind them cannot be decoded.
TEST_F(Streaming, ASinkThatRefusesHeldFramesEndsTheirRelease) {
  const ByteString picture = Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 16), Unsigned(id::kPixelHeight, 16)}));
  const ByteString tracks = Join({TrackEntry(1, 1, "V_VP8", picture), TrackEntry(2, 2, "A_AC3")});
  ByteString blocks;
  for (std::int16_t time = 0; time < 1400; time += 20) blocks = Join({blocks, SimpleBlock(2, time, Zeros(200000))});
  for (const int time : {0, 40, 80, 120, 160}) {
    blocks = Join({blocks, SimpleBlock(1, static_cast<std::int16_t>(time), {1}, time % 80 == 0 && time < 160)});
  }
  const ByteString info = Element(id::kInfo, Unsigned(id::kTimecodeScale, 1000000));
  OpenBytes(MatroskaFile(Join({info, Element(id::kTracks, tracks), Cluster(0, blocks)})));
  ASSERT_EQ(Graph().ConnectSink(Output(0).Get(), SinkKind::kCounting), S_OK);
  ASSERT_EQ(Graph().ConnectSink(Output(1).Get(), SinkKind::kRefusing), S_OK);
  LogCapture log(Splitter());
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  WaitForThePass(log);
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Graph().Sink(1).Samples().size(), 1U);
  const auto pictures = Graph().Sink(0).Samples();
  EXPECT_TRUE(pictures.empty() || pictures.front().key) << log.Joined();
}

TEST_F(Streaming, PicturesOutOfOrderAreShownUpToTheStopAndNoneAfterIt) {
  const ByteString picture = Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 16), Unsigned(id::kPixelHeight, 16)}));
  const ByteString track = TrackEntry(1, 1, "V_VP8", Join({Unsigned(id::kDefaultDuration, 20000000), picture}));
  const ByteString info = Element(id::kInfo, Unsigned(id::kTimecodeScale, 1000000));
  ByteString blocks = SimpleBlock(2, 0, {1});  // its end has not come, so that the pass goes on
  for (const int time : {0, 80, 95, 60, 100, 101, 40}) {
    blocks = Join({blocks, SimpleBlock(1, static_cast<std::int16_t>(time), {1}, time < 81)});
  }
  OpenBytes(
      MatroskaFile(Join({info, Element(id::kTracks, Join({track, TrackEntry(2, 2, "A_AC3")})), Cluster(0, blocks)})));
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  LONGLONG start = 0;
  LONGLONG stop = 1000000;
  ASSERT_EQ(QueryFor<IMediaSeeking>(Output(0).Get())
                ->SetPositions(&start, AM_SEEKING_AbsolutePositioning, &stop, AM_SEEKING_AbsolutePositioning),
            S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().WaitForEnd());
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Graph().Sink(0).Samples().size(), 5U);
  EXPECT_EQ(Graph().Sink(0).AfterEnd(), 0);
}

}  // namespace
}  // namespace tarvex::test
