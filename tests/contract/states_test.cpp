// State changes, with everything connected, with some pins, and with none.
#include "framework/thread.h"
#include "tests/contract/contract_fixture.h"
#include "tests/support/log_capture.h"

namespace tarvex::test {
namespace {

using UnopenedStates = ContractTest;
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

TEST_F(States, WithoutSinksNoPassIsMade) {
  LogCapture log(Graph().Splitter());
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  for (int k = 0; k < 200 && !log.Contains("CMatroskaSplitter::ThreadProc Process exit"); ++k) SleepMilliseconds(10);
  EXPECT_EQ(log.CountOf("CMatroskaSplitter::ThreadProc tm_start"), 1U);
  EXPECT_EQ(log.CountOf("CMatroskaSplitter::ThreadProc Process exit"), 1U);
  EXPECT_FALSE(log.Contains("EndOfStream"));
  EXPECT_EQ(StateOf(Graph().Splitter()), State_Running);
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(log.CountOf("CMatroskaSplitter::ThreadProc tm_exit"), 1U);
}

TEST_F(States, PausingTwiceStartsOnePassThatFillsEverySink) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  LogCapture log(Graph().Splitter());
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  ASSERT_TRUE(SUCCEEDED(Graph().Splitter()->Pause()));
  ASSERT_TRUE(Graph().WaitForEnd());
  EXPECT_EQ(StateOf(Graph().Splitter()), State_Paused);
  EXPECT_EQ(log.CountOf("CMatroskaSplitter::ThreadProc tm_start"), 1U);
  EXPECT_EQ(Graph().Sink(0).CountOf(SinkEvent::Kind::kEndOfStream), 1U);
}

}  // namespace
}  // namespace tarvex::test
