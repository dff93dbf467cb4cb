// The order of what reaches a sink: segments, samples, flushes and the end; and the worker's life, as state changes,
// flushes and failures show it.
#include <atomic>

#include "tests/contract/contract_fixture.h"
#include "tests/support/log_capture.h"

namespace tarvex::test {
namespace {

using Kind = SinkEvent::Kind;
using UnopenedStates = GraphTest;

constexpr const char* kPassed = "CMatroskaSplitter::ThreadProc Process exit";

// More than the reader's window and the pins' rings hold, so that neither hides a reader or a sink.
constexpr MovieShape kLongMovie = {.frames = 1500, .frameSize = 10000};

class Streaming : public OpenedTest {
 protected:
  void ExpectEnds(std::size_t count) {
    for (const auto& sink : Graph().Sinks()) {
      EXPECT_TRUE(Eventually([&] { return sink->CountOf(Kind::kEndOfStream) == count; })) << count;
    }
  }
};

TEST_F(UnopenedStates, AFilterWithoutSourceRunsAndEndsByItself) {
  EXPECT_EQ(Splitter()->Stop(), S_FALSE);
  EXPECT_TRUE(SUCCEEDED(Splitter()->Run(0)));
  EXPECT_EQ(StateOf(Splitter()), State_Running);
  EXPECT_EQ(Splitter()->Pause(), S_OK);
  EXPECT_EQ(StateOf(Splitter()), State_Paused);
  EXPECT_EQ(Splitter()->Stop(), S_OK);
  EXPECT_EQ(CreateSplitter()->Pause(), S_OK);  // and the last reference is given back while its worker is there
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

TEST_F(Streaming, ASeekAFlushAndAnEndFromUpstreamReachEverySinkAndNothingComesInBetween) {
  OpenMovie(kLongMovie);
  double rate = 0;
  EXPECT_EQ(QueryFor<IMediaSeeking>(Output(0).Get())->SetRate(2.5), S_OK);
  EXPECT_EQ(QueryFor<IMediaSeeking>(Output(0).Get())->GetRate(&rate), S_OK);
  EXPECT_EQ(rate, 2.5);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kSlow), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(EverySinkHasASample());
  ASSERT_EQ(Graph().InputPin()->BeginFlush(), S_OK);
  SleepMilliseconds(50);
  ASSERT_EQ(Graph().InputPin()->EndFlush(), S_OK);
  EXPECT_EQ(Seek(kSecond), S_OK);
  ASSERT_TRUE(EverySinkHasASample());
  EXPECT_EQ(Graph().InputPin()->EndOfStream(), S_OK);
  EXPECT_TRUE(Graph().WaitForEnd());
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  for (const auto& sink : Graph().Sinks()) {
    bool flushing = false;
    for (const SinkEvent& event : sink->Events()) {
      EXPECT_EQ(flushing, event.kind == Kind::kEndFlush) << "in the middle of a flush, or without one";
      flushing = event.kind == Kind::kBeginFlush;
      EXPECT_TRUE(event.kind != Kind::kNewSegment || event.rate == rate);
    }
    EXPECT_EQ(sink->CountOf(Kind::kEndFlush), 2U);
    EXPECT_EQ(sink->CountOf(Kind::kEndOfStream), 1U);
    EXPECT_LT(sink->CountOf(Kind::kSample), kLongMovie.frames / 2);
  }
}

// The first read of a pass is the worker's own, later ones come from the thread that reads ahead. A source that breaks
// off says so, and fails the read that it is in.
TEST_F(Streaming, AnEndFromUpstreamInsideAReadHoldsNobodyUp) {
  for (const auto& [read, answer] : {std::pair{1, S_OK}, {2, S_OK}, {8, S_OK}, {1, E_FAIL}}) {
    SCOPED_TRACE(testing::Message() << read << ", " << answer);
    std::atomic<int> left{0};
    const auto source = SourceFilter::FromBytes(MakeMovie({.frames = 400, .frameSize = 60000}));
    source->BeforeEachCall([&, last = answer] {
      if (left == 0 || (left > 1 && left-- > 1)) return S_OK;
      if (SUCCEEDED(last)) left = 0;
      static_cast<void>(Graph().InputPin()->EndOfStream());
      return last;
    });
    Open(source);
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
    left = read;
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ExpectEnds(1);
    left = read;
    EXPECT_EQ(Seek(0), S_OK);
    ExpectEnds(2);
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

// The pass is over, and nobody but upstream knows of an end. A peer that says no says so itself to the application,
// where its documents tell it to.
TEST_F(Streaming, AnEndFromUpstreamReachesThoseThatARefusedPassLeftWithoutOne) {
  for (const HRESULT refusal : {VFW_E_NOT_COMMITTED, VFW_E_WRONG_STATE, E_OUTOFMEMORY, VFW_E_SAMPLE_REJECTED}) {
    OpenMovie(kLongMovie);
    LogCapture log(Splitter());
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
    Graph().Sink(1).AnswerWith([refusal](IMediaSample* /*sample*/) { return refusal; });
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ASSERT_TRUE(log.WaitFor(kPassed));
    EXPECT_FALSE(IsAborted());
    EXPECT_EQ(Graph().Sink(1).CountOf(Kind::kSample), 1U) << "it was asked again";
    ASSERT_EQ(Graph().Sink(0).CountOf(Kind::kEndOfStream), 0U);
    for (int end = 0; end < 2; ++end) EXPECT_EQ(Graph().InputPin()->EndOfStream(), S_OK);
    EXPECT_TRUE(Graph().Sink(0).WaitForEnd(kPatience));
    EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
    EXPECT_EQ(Graph().Sink(0).CountOf(Kind::kEndOfStream), 1U) << "the second one is known";
  }
}

TEST_F(Streaming, FrameThatNoRingCanHoldAbortsTheGraph) {
  OpenMovie({.videos = 0, .frames = 1, .frameSize = 10'485'601});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_TRUE(Graph().WaitForEvent(kEcErrorAbort));
}

}  // namespace
}  // namespace tarvex::test
