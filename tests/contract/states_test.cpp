// State changes, with everything connected, with some pins, and with none.
#include "framework/thread.h"
#include "tests/contract/contract_fixture.h"
#include "tests/support/log_capture.h"

namespace tarvex::test {
namespace {

class UnopenedStates : public ContractTest {};
using States = OpenedTest;

TEST_F(UnopenedStates, AFilterWithoutSourceGoesThroughItsStates) {
  TestGraph graph;
  IBaseFilter* filter = graph.Splitter();
  EXPECT_EQ(StateOf(filter), State_Stopped);
  EXPECT_TRUE(SUCCEEDED(filter->Pause()));
  EXPECT_EQ(StateOf(filter), State_Paused);
  EXPECT_TRUE(SUCCEEDED(filter->Run(0)));
  EXPECT_EQ(StateOf(filter), State_Running);
  EXPECT_TRUE(SUCCEEDED(filter->Stop()));
  EXPECT_EQ(StateOf(filter), State_Stopped);
  EXPECT_TRUE(SUCCEEDED(filter->Stop()));
}

TEST_F(States, AFilterWithoutSinksGoesThroughItsStates) {
  EXPECT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_EQ(StateOf(Graph().Splitter()), State_Running);
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(StateOf(Graph().Splitter()), State_Stopped);
}

TEST_F(States, WithoutSinksNoPassIsMade) {
  LogCapture log(Graph().Splitter());
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  for (int k = 0; k < 200 && !log.Contains("CMatroskaSplitter::ThreadProc Process exit"); ++k) SleepMilliseconds(10);
  EXPECT_EQ(log.CountOf("CMatroskaSplitter::ThreadProc tm_start"), 1U);
  EXPECT_EQ(log.CountOf("CMatroskaSplitter::ThreadProc Process exit"), 1U);
  EXPECT_FALSE(log.Contains("EndOfStream"));
}

TEST_F(States, PausingTwiceStartsOnePass) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  LogCapture log(Graph().Splitter());
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  ASSERT_TRUE(SUCCEEDED(Graph().Splitter()->Pause()));
  ASSERT_TRUE(Graph().WaitForEnd());
  EXPECT_EQ(log.CountOf("CMatroskaSplitter::ThreadProc tm_start"), 1U);
  EXPECT_EQ(Graph().Sink(0).CountOf(SinkEvent::Kind::kEndOfStream), 1U);
}

TEST_F(States, APausedGraphIsReadyAndHoldsFirstSamples) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  for (const auto& sink : Graph().Sinks()) EXPECT_TRUE(sink->WaitForSample(kPatience));
  EXPECT_EQ(StateOf(Graph().Splitter()), State_Paused);
}

TEST_F(States, AnUnconnectedVideoPinKeepsNothingBack) {
  ASSERT_EQ(Graph().ConnectSink(Output(1).Get(), SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().WaitForEnd());
  EXPECT_EQ(Graph().Sink(0).Samples().size(), 100U);
}

TEST_F(States, AnUnconnectedAudioPinKeepsNothingBack) {
  ASSERT_EQ(Graph().ConnectSink(Output(0).Get(), SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().WaitForEnd());
  EXPECT_EQ(Graph().Sink(0).Samples().size(), 100U);
}

TEST_F(States, OnePinPerKindIsTheDefault) {
  TestGraph graph;
  const auto source = CSourceFilter::FromBytes(MakeMovie({.videos = 1, .audios = 3}));
  ASSERT_EQ(graph.Open(source.Get()), S_OK);
  EXPECT_EQ(graph.OutputPins().size(), 2U);
}

}  // namespace
}  // namespace tarvex::test
