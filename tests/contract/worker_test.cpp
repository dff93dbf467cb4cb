// The worker's life, as state changes, flushes and failures show it.
#include <chrono>

#include "framework/thread.h"
#include "tests/contract/contract_fixture.h"
#include "tests/support/log_capture.h"

namespace tarvex::test {
namespace {

constexpr const char* kStarted = "CMatroskaSplitter::ThreadProc tm_start";
constexpr const char* kPaused = "CMatroskaSplitter::ThreadProc tm_pause";
constexpr LONG kEcErrorAbort = 3;

// More than the reader's window and the pins' rings hold, so that neither hides a reader or a sink.
constexpr MovieShape kLongMovie = {.frames = 1500, .frameSize = 10000};

class Worker : public GraphTest {
 protected:
  void TearDown() override {
    m_log.reset();
    GraphTest::TearDown();
  }
  void OpenMovie(const MovieShape& shape) {
    GraphTest::OpenMovie(shape);
    m_log.emplace(Splitter());
  }

  /// In milliseconds.
  template <class Call>
  long long TimeOf(Call call) {
    const auto begin = std::chrono::steady_clock::now();
    call();
    const auto passed = std::chrono::steady_clock::now() - begin;
    return std::chrono::duration_cast<std::chrono::milliseconds>(passed).count();
  }
  HRESULT Seek(REFERENCE_TIME time) {
    const auto seeking = QueryFor<IMediaSeeking>(Graph().OutputPins().front().Get());
    return seeking->SetPositions(&time, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
  }

  std::optional<LogCapture> m_log;
};

// The graph passes on what it is answered, and S_FALSE tells an application that the stop goes on.
TEST_F(Worker, StopIsDoneWhenThereWasOneAndSaysWhenThereWasNone) {
  EXPECT_EQ(Splitter()->Stop(), S_FALSE);
  OpenMovie(kLongMovie);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kSlow), S_OK);
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    EXPECT_EQ(Graph().Stop(), S_OK);
    EXPECT_EQ(Splitter()->Stop(), S_FALSE);
    ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
    EXPECT_EQ(Splitter()->Stop(), S_OK);
    EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  }
}

TEST_F(Worker, SeekWhileRunningPausesAndStartsIt) {
  OpenMovie(kLongMovie);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kSlow), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().Sink(0).WaitForSample(kPatience));
  EXPECT_LT(TimeOf([this] { EXPECT_EQ(Seek(10'000'000), S_OK); }), 1000);
  EXPECT_EQ(m_log->CountOf(kPaused), 1u);
  EXPECT_EQ(m_log->CountOf(kStarted), 2u);
}

TEST_F(Worker, SeekWhileStoppedStartsNothing) {
  OpenMovie({});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  EXPECT_EQ(Seek(10'000'000), S_OK);
  EXPECT_EQ(m_log->CountOf(kStarted), 0u);
  EXPECT_EQ(m_log->CountOf("BeginFlush"), 0u);
}

TEST_F(Worker, SeeksByADistanceFromTwoThreadsAllCount) {
  constexpr int kSteps = 2000;
  OpenMovie({});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  const auto seeking = QueryFor<IMediaSeeking>(Graph().OutputPins().front().Get());
  ASSERT_EQ(Seek(0), S_OK);
  const auto step = [&] {
    for (int k = 0; k < kSteps; ++k) {
      LONGLONG distance = 1;
      seeking->SetPositions(&distance, AM_SEEKING_RelativePositioning, nullptr, AM_SEEKING_NoPositioning);
    }
  };
  Thread other;
  ASSERT_EQ(other.Start(step), S_OK);
  step();
  other.Join();
  LONGLONG start = 0;
  LONGLONG stop = 0;
  EXPECT_EQ(seeking->GetPositions(&start, &stop), S_OK);
  EXPECT_EQ(start, 2 * kSteps);
}

TEST_F(Worker, StopEndsAReadThatOnlyAFlushEnds) {
  OpenMovie(kLongMovie);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));  // prepares the index, which the next start then has
  ASSERT_TRUE(SUCCEEDED(Graph().Stop()));
  m_source->BlockFrom(0);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  ASSERT_TRUE(m_source->WaitUntilBlocked(kPatience));
  EXPECT_LT(TimeOf([this] { Graph().Stop(); }), 1000);
  EXPECT_FALSE(Graph().WaitForEvent(kEcErrorAbort, 100)) << "our own flush was reported as a failure";
}

// Downstream may keep its samples through a flush.
TEST_F(Worker, FlushFromUpstreamEndsTheWaitForRoom) {
  constexpr std::size_t kRing = 10'485'600;
  OpenMovie({.videos = 0, .frames = 1500, .frameSize = 10000});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  std::vector<ComPtr<IMediaSample>> kept;
  kept.reserve(1500);
  Graph().Sink(0).OnSample([&](IMediaSample* sample) { kept.emplace_back(sample); });
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  const auto await = [](auto condition) {
    for (DWORD wait = 0; wait < kPatience && !condition(); ++wait) SleepMilliseconds(1);
    return condition();
  };
  ASSERT_TRUE(await([&] { return Graph().Sink(0).Samples().size() == kRing / 10000; }));
  EXPECT_EQ(Graph().InputPin()->BeginFlush(), S_OK);
  EXPECT_TRUE(await([&] { return m_log->Contains("CMatroskaSplitter::OnData failed"); })) << "the worker waits on";
  EXPECT_EQ(Graph().InputPin()->EndFlush(), S_OK);
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
}

TEST_F(Worker, FrameThatNoRingCanHoldAbortsTheGraph) {
  OpenMovie({.videos = 0, .frames = 1, .frameSize = 10'485'601});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_TRUE(Graph().WaitForEvent(kEcErrorAbort));
  EXPECT_TRUE(m_log->Contains("CSampleBuffer::GetSample size of buffer less than sample")) << m_log->Joined();
}

TEST_F(Worker, LastReferenceGivenBackWhileItRunsEndsIt) {
  // Without a graph, which would stop the filter.
  const ComPtr<IBaseFilter> splitter = CreateSplitter();
  EXPECT_EQ(splitter->Pause(), S_OK);
}

}  // namespace
}  // namespace tarvex::test
