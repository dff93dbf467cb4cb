// The order of what reaches a sink: segments, samples, flushes and the end; and the worker's life, as state changes,
// flushes and failures show it.
#include <atomic>

#include "tests/contract/contract_fixture.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/log_capture.h"

namespace tarvex::test {
namespace {

using Kind = SinkEvent::Kind;
using UnopenedStates = GraphTest;

constexpr const char* kStarted = "CMatroskaSplitter::ThreadProc tm_start";
constexpr const char* kPassed = "CMatroskaSplitter::ThreadProc Process exit";

// More than the reader's window and the pins' rings hold, so that neither hides a reader or a sink.
constexpr MovieShape kLongMovie = {.frames = 1500, .frameSize = 10000};

class Streaming : public OpenedTest {
 protected:
  // A segment, all samples, the end.
  static void ExpectOnePass(SinkFilter& sink) {
    const std::vector<SinkEvent> events = sink.Events();
    ASSERT_EQ(events.size(), 102U);
    EXPECT_EQ(events.front().kind, Kind::kNewSegment);
    EXPECT_EQ(events.front().start, 0);
    EXPECT_EQ(events.front().rate, 1.0);
    for (std::size_t k = 1; k <= 100; ++k) {
      ASSERT_EQ(events[k].kind, Kind::kSample);
      EXPECT_EQ(events[k].start, static_cast<REFERENCE_TIME>(k - 1) * kPictureTime);
      EXPECT_EQ(events[k].stop - events[k].start, kPictureTime);
      EXPECT_EQ(events[k].discontinuity, k == 1);
    }
    EXPECT_EQ(events.back().kind, Kind::kEndOfStream);
  }
  void OpenTracks(const ByteString& tracks, const ByteString& blocks) {
    const ByteString info = Element(id::kInfo, Unsigned(id::kTimecodeScale, 1000000));
    const ByteString file = MatroskaFile(Join({info, Element(id::kTracks, tracks), Cluster(0, blocks)}));
    Open(SourceFilter::FromBytes(file));
  }
  static ByteString Pictures(std::uint64_t duration) {
    const ByteString size = Join({Unsigned(id::kPixelWidth, 16), Unsigned(id::kPixelHeight, 16)});
    return TrackEntry(1, 1, "V_VP8", Join({Unsigned(id::kDefaultDuration, duration), Element(id::kVideo, size)}));
  }
};

TEST_F(Streaming, EachStartIsOneSegmentItsSamplesAndOneEndAndGoingOnIsNone) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  for (int round = 0; round < 3; ++round) {
    LogCapture log(Splitter());
    if (round != 0) {
      ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
      ASSERT_TRUE(SUCCEEDED(Splitter()->Pause()));
      EXPECT_EQ(StateOf(Splitter()), State_Paused);
      ASSERT_TRUE(Graph().WaitForEnd());
    }
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ASSERT_TRUE(Graph().WaitForEnd());
    EXPECT_EQ(StateOf(Splitter()), State_Running);
    EXPECT_EQ(Graph().InputPin()->EndOfStream(), S_OK) << "an end from upstream, which is known";
    EXPECT_EQ(Graph().Stop(), S_OK);
    EXPECT_EQ(Splitter()->Stop(), S_FALSE) << "there was nothing to stop";
    EXPECT_EQ(StateOf(Splitter()), State_Stopped);
    for (const auto& sink : Graph().Sinks()) {
      ExpectOnePass(*sink);
      sink->Clear();
    }
    EXPECT_EQ(log.CountOf(kStarted), 1U);
    EXPECT_EQ(log.CountOf("DeliverFrameSample tStart: 400000 tStop: 800000 splice: 1"), 1U) << "not for sound";
  }
}

TEST_F(UnopenedStates, AFilterWithoutSourceGoesThroughItsStatesAndEndsByItself) {
  EXPECT_EQ(Splitter()->Stop(), S_FALSE);
  EXPECT_TRUE(SUCCEEDED(Splitter()->Pause()));
  EXPECT_EQ(StateOf(Splitter()), State_Paused);
  EXPECT_TRUE(SUCCEEDED(Splitter()->Run(0)));
  EXPECT_EQ(StateOf(Splitter()), State_Running);
  EXPECT_EQ(Splitter()->Stop(), S_OK);
  EXPECT_EQ(StateOf(Splitter()), State_Stopped);
  EXPECT_EQ(CreateSplitter()->Pause(), S_OK);  // and the last reference is given back while its worker is there
}

TEST_F(Streaming, WithoutSinksNoPassIsMade) {
  LogCapture log(Splitter());
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_TRUE(log.WaitFor(kPassed));
  EXPECT_FALSE(log.Contains("EndOfStream"));
  EXPECT_EQ(StateOf(Splitter()), State_Running);
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

TEST_F(Streaming, ASeekOrAFlushFromUpstreamReachesEverySinkAndNothingComesInBetween) {
  OpenMovie(kLongMovie);
  LogCapture log(Splitter());
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kSlow), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(EverySinkHasASample());
  ASSERT_EQ(Graph().InputPin()->BeginFlush(), S_OK);
  SleepMilliseconds(50);
  ASSERT_EQ(Graph().InputPin()->EndFlush(), S_OK);
  EXPECT_EQ(Seek(kSecond), S_OK);
  EXPECT_EQ(log.CountOf("CMatroskaSplitter::ThreadProc tm_pause"), 1U);
  EXPECT_EQ(log.CountOf(kStarted), 2U);
  for (const auto& sink : Graph().Sinks()) {
    bool flushing = false;
    for (const SinkEvent& event : sink->Events()) {
      EXPECT_EQ(flushing, event.kind == Kind::kEndFlush) << "in the middle of a flush, or without one";
      flushing = event.kind == Kind::kBeginFlush;
    }
    EXPECT_FALSE(flushing);
    EXPECT_EQ(sink->CountOf(Kind::kEndFlush), 2U);
  }
}

TEST_F(Streaming, AnEndFromUpstreamEndsWhatIsBeingDelivered) {
  OpenMovie(kLongMovie);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kSlow), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(EverySinkHasASample());
  EXPECT_EQ(Graph().InputPin()->EndOfStream(), S_OK);
  EXPECT_TRUE(Graph().WaitForEnd());
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  for (const auto& sink : Graph().Sinks()) {
    EXPECT_EQ(sink->CountOf(Kind::kEndOfStream), 1U);
    EXPECT_LT(sink->CountOf(Kind::kSample), kLongMovie.frames);
  }
}

// The first read of a pass is the worker's own, later ones come from the thread that reads ahead.
TEST_F(Streaming, AnEndFromUpstreamInsideAReadHoldsNobodyUp) {
  for (const int read : {1, 2, 5, 8}) {
    SCOPED_TRACE(read);
    std::atomic<int> left{0};
    const auto source =
        SourceFilter::FromBytes(MakeMovie({.videos = 1, .audios = 1, .frames = 400, .frameSize = 60000}));
    source->BeforeEachCall([&] { return left > 0 && --left == 0 ? Graph().InputPin()->EndOfStream() : S_OK; });
    Open(source);
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
    left = read;
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    EXPECT_TRUE(Graph().WaitForEnd());
    for (const auto& sink : Graph().Sinks()) EXPECT_EQ(sink->CountOf(Kind::kEndOfStream), 1U);
    left = read;
    EXPECT_EQ(Seek(0), S_OK);
    for (const auto& sink : Graph().Sinks()) {
      EXPECT_TRUE(Eventually([&] { return sink->CountOf(Kind::kEndOfStream) == 2; }))
          << "it does not play after a seek";
    }
    EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
    Drop();
  }
}

// Downstream may keep its samples through a flush.
TEST_F(Streaming, AFlushFromUpstreamEndsTheWaitForRoom) {
  constexpr std::size_t kRing = 10'485'600;
  OpenMovie({.videos = 0, .frames = 1500, .frameSize = 10000});
  LogCapture log(Splitter());
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  std::vector<ComPtr<IMediaSample>> kept;
  kept.reserve(1500);
  Graph().Sink(0).OnSample([&](IMediaSample* sample) { kept.emplace_back(sample); });
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Eventually([&] { return Graph().Sink(0).CountOf(Kind::kSample) == kRing / 10000; }));
  EXPECT_EQ(Graph().InputPin()->BeginFlush(), S_OK);
  EXPECT_TRUE(log.WaitFor("CMatroskaSplitter::OnData failed")) << "the worker waits on";
  EXPECT_EQ(Graph().InputPin()->EndFlush(), S_OK);
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
}

TEST_F(Streaming, ASinkThatRefusesIsNotAskedAgainAndEndsThePass) {
  OpenMovie({.videos = 0, .audios = 1, .frames = 400, .frameSize = 60000});
  LogCapture log(Splitter());
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  Graph().Sink(0).AnswerWith([](IMediaSample* /*sample*/) { return VFW_E_SAMPLE_REJECTED; });
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_TRUE(log.WaitFor(kPassed));
  EXPECT_TRUE(log.Contains("CMatroskaVideoPin::OnData 8004022b")) << log.Joined();
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Graph().Sink(0).Samples().size(), 1U);
  EXPECT_EQ(Graph().Sink(0).CountOf(Kind::kEndOfStream), 0U);
}

// The pass is over, and nobody but upstream knows of an end.
TEST_F(Streaming, AnEndFromUpstreamReachesThoseThatARefusedPassLeftWithoutOne) {
  OpenMovie(kLongMovie);
  LogCapture log(Splitter());
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  Graph().Sink(1).AnswerWith([](IMediaSample* /*sample*/) { return VFW_E_SAMPLE_REJECTED; });
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(log.WaitFor(kPassed));
  ASSERT_EQ(Graph().Sink(0).CountOf(Kind::kEndOfStream), 0U);
  EXPECT_EQ(Graph().InputPin()->EndOfStream(), S_OK);
  EXPECT_EQ(Graph().InputPin()->EndOfStream(), S_OK) << "which is known now";
  EXPECT_TRUE(Eventually([&] { return Graph().Sink(0).CountOf(Kind::kEndOfStream) == 1; }));
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Graph().Sink(0).CountOf(Kind::kEndOfStream), 1U);
}

// A source that breaks off says so, and fails the read that it is in.
TEST_F(Streaming, AnEndFromUpstreamIsPassedOnWhenItsReadFails) {
  const auto source = SourceFilter::FromBytes(MakeMovie(kLongMovie));
  std::atomic<bool> breaksOff{false};
  source->BeforeEachCall([&] {
    if (!breaksOff) return S_OK;
    static_cast<void>(Graph().InputPin()->EndOfStream());
    return E_FAIL;
  });
  Open(source);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  breaksOff = true;
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  for (const auto& sink : Graph().Sinks()) {
    EXPECT_TRUE(Eventually([&] { return sink->CountOf(Kind::kEndOfStream) == 1; }));
  }
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
}

// More sound than its ring can take is held until the second key frame comes. Where the sound is refused before the
// pictures went, they are lost, and what comes behind them cannot be decoded.
TEST_F(Streaming, ASinkThatRefusesHeldFramesEndsTheirRelease) {
  ByteString blocks;
  for (std::int16_t time = 0; time < 1400; time += 20) blocks = Join({blocks, SimpleBlock(2, time, Zeros(200000))});
  for (const int time : {0, 40, 80, 120, 160}) {
    blocks = Join({blocks, SimpleBlock(1, static_cast<std::int16_t>(time), {1}, time % 80 == 0 && time < 160)});
  }
  OpenTracks(Join({Pictures(40000000), TrackEntry(2, 2, "A_AC3")}), blocks);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  Graph().Sink(1).AnswerWith([](IMediaSample* /*sample*/) { return VFW_E_SAMPLE_REJECTED; });
  LogCapture log(Splitter());
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_TRUE(log.WaitFor(kPassed));
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Graph().Sink(1).Samples().size(), 1U);
  const auto pictures = Graph().Sink(0).Samples();
  EXPECT_TRUE(pictures.empty() || pictures.front().key) << log.Joined();
}

TEST_F(Streaming, PicturesOutOfOrderAreShownUpToTheStopAndNoneAfterIt) {
  ByteString blocks = SimpleBlock(2, 0, {1});  // its end has not come, so that the pass goes on
  for (const int time : {0, 80, 95, 60, 100, 101, 40}) {
    blocks = Join({blocks, SimpleBlock(1, static_cast<std::int16_t>(time), {1}, time < 81)});
  }
  OpenTracks(Join({Pictures(20000000), TrackEntry(2, 2, "A_AC3")}), blocks);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  LONGLONG start = 0;
  LONGLONG stop = 100 * kMillisecond;
  ASSERT_EQ(QueryFor<IMediaSeeking>(Output(0).Get())
                ->SetPositions(&start, AM_SEEKING_AbsolutePositioning, &stop, AM_SEEKING_AbsolutePositioning),
            S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().WaitForEnd());
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Graph().Sink(0).Samples().size(), 5U);
  EXPECT_EQ(Graph().Sink(0).AfterEnd(), 0);
}

TEST_F(Streaming, StopEndsAReadThatOnlyAFlushEnds) {
  OpenMovie(kLongMovie);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));  // prepares the index, which the next start then has
  ASSERT_TRUE(SUCCEEDED(Graph().Stop()));
  m_source->BlockFrom(0);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  ASSERT_TRUE(m_source->WaitUntilBlocked(kPatience));
  EXPECT_EQ(Graph().Stop(), S_OK);
  EXPECT_FALSE(IsAborted()) << "our own flush was reported as a failure";
}

TEST_F(Streaming, FrameThatNoRingCanHoldAbortsTheGraph) {
  OpenMovie({.videos = 0, .frames = 1, .frameSize = 10'485'601});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_TRUE(Graph().WaitForEvent(kEcErrorAbort));
}

}  // namespace
}  // namespace tarvex::test
