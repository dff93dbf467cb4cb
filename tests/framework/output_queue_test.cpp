// The output queue's order, batches, refusals and flushes.
#include "framework/output_queue.h"

#include <gtest/gtest.h>

#include "tests/framework/downstream.h"

namespace tarvex::test {
namespace {

using Words = std::vector<std::string>;

/// As an output pin of this system makes it: own thread, exact batches that are sent anyway.
class OutputQueue : public ::testing::Test {
 protected:
  std::unique_ptr<COutputQueue> Make(LONG batchSize = 200) {
    HRESULT hr = S_OK;
    auto queue = std::make_unique<COutputQueue>(down.Pin(), &hr, batchSize, 4);
    EXPECT_EQ(hr, S_OK);
    return queue;
  }
  HRESULT Send(COutputQueue& queue, int mark) {
    const HRESULT hr = queue.Receive(down.Sample(mark));
    queue.SendAnyway();
    return hr;
  }
  void WaitUntilIdle(const COutputQueue& queue) {
    while (!queue.IsIdle()) SleepMilliseconds(1);
  }

  Downstream down;
};

TEST_F(OutputQueue, KeepsSamplesSegmentsAndEndInOrder) {
  const auto queue = Make();
  Words expected;
  for (int i = 0; i < 40; ++i) {
    if (i % 10 == 0) {
      queue->NewSegment(i, 100, 1.0);
      expected.push_back("segment:" + std::to_string(i));
    }
    EXPECT_EQ(Send(*queue, i), S_OK);
    expected.push_back("s:" + std::to_string(i));
  }
  queue->EOS();
  expected.emplace_back("eos");
  ASSERT_TRUE(down.WaitForWords(expected.size()));
  EXPECT_EQ(down.Words(), expected);
}

TEST_F(OutputQueue, ExactBatchWaitsUntilItIsFullOrTheStreamEnds) {
  LONG outAtSecond = 0;
  down.onSample = [&](int mark) {
    if (mark == 2) outAtSecond = down.Out();
    return S_OK;
  };
  const auto queue = Make(3);
  queue->Receive(down.Sample(1));
  queue->Receive(down.Sample(2));
  SleepMilliseconds(20);
  EXPECT_TRUE(down.Words().empty());
  queue->Receive(down.Sample(3));
  ASSERT_TRUE(down.WaitForWords(3));
  EXPECT_EQ(outAtSecond, 3) << "not in one batch";
  queue->Receive(down.Sample(4));
  queue->EOS();
  ASSERT_TRUE(down.WaitForWords(5));
  EXPECT_EQ(down.Words(), (Words{"s:1", "s:2", "s:3", "s:4", "eos"}));
}

TEST_F(OutputQueue, SamplesSentAnywayAreFreedOneByOne) {
  Event entered;
  Event go(Event::Mode::kManual);
  LONG outAtSecond = 0;
  down.onSample = [&](int mark) {
    if (mark == 2) outAtSecond = down.Out();
    entered.Set();
    go.Wait(5000);
    return S_OK;
  };
  const auto queue = Make();
  for (int mark = 1; mark <= 3; ++mark) Send(*queue, mark);
  ASSERT_TRUE(entered.Wait(5000));
  go.Set();
  ASSERT_TRUE(down.WaitForWords(3));
  EXPECT_EQ(outAtSecond, 2);
}

TEST_F(OutputQueue, FirstRefusalDropsWhatFollowsAndIsReportedUntilReset) {
  Event refused;
  Event go;
  down.onSample = [&](int mark) {
    if (mark != 1) return S_OK;
    refused.Set();
    go.Wait(5000);
    return E_ACCESSDENIED;
  };
  const auto queue = Make();
  Send(*queue, 1);
  ASSERT_TRUE(refused.Wait(5000));
  Send(*queue, 2);
  go.Set();
  WaitUntilIdle(*queue);
  EXPECT_EQ(Send(*queue, 3), E_ACCESSDENIED);
  EXPECT_EQ(down.Words(), Words{"s:1"});
  EXPECT_EQ(down.Out(), 0);
  queue->Reset();
  EXPECT_EQ(Send(*queue, 4), S_OK);
}

TEST_F(OutputQueue, EndOfStreamPassesARefusalUnlessThePinHasSeenTheEnd) {
  for (const HRESULT refusal : {S_FALSE, VFW_E_SAMPLE_REJECTED_EOS}) {
    const std::size_t before = down.Words().size();
    down.onSample = [refusal](int) { return refusal; };
    const auto queue = Make();
    Send(*queue, 1);
    WaitUntilIdle(*queue);
    queue->EOS();
    WaitUntilIdle(*queue);
    EXPECT_EQ(down.Words().size() - before, refusal == S_FALSE ? 2U : 1U);
  }
}

TEST_F(OutputQueue, FlushDropsWaitingSamplesAndEndsARefusal) {
  Event entered;
  down.onSample = [&](int mark) {
    if (mark != 1) return S_OK;
    entered.Set();
    return down.WaitForFlush() ? S_FALSE : E_FAIL;
  };
  const auto queue = Make();
  Send(*queue, 1);
  ASSERT_TRUE(entered.Wait(5000));
  Send(*queue, 2);
  queue->BeginFlush();
  EXPECT_EQ(Send(*queue, 3), S_FALSE);
  queue->EndFlush();
  EXPECT_EQ(Send(*queue, 4), S_OK);
  ASSERT_TRUE(down.WaitForWords(4));
  EXPECT_EQ(down.Words(), (Words{"s:1", "flush", "endflush", "s:4"}));
  WaitUntilIdle(*queue);
  EXPECT_EQ(down.Out(), 0);
}

TEST_F(OutputQueue, FlushFromTheQueuesOwnThreadDoesNotWaitForItself) {
  const auto queue = Make();
  down.onSample = [&](int mark) {
    if (mark != 1) return S_OK;
    EXPECT_EQ(Send(*queue, 2), S_OK);
    queue->BeginFlush();
    queue->EndFlush();
    EXPECT_EQ(Send(*queue, 9), S_OK);
    return E_FAIL;  // belongs to the time before the flush: must not refuse the sample after it
  };
  Send(*queue, 1);
  ASSERT_TRUE(down.WaitForWords(4));
  WaitUntilIdle(*queue);
  EXPECT_EQ(down.Words(), (Words{"s:1", "flush", "endflush", "s:9"}));
  EXPECT_EQ(Send(*queue, 10), S_OK);
}

TEST_F(OutputQueue, PinWithoutMemInputPinIsRefusedAtConstruction) {
  HRESULT hr = S_OK;
  COutputQueue queue(down.source->Pin(), &hr, 1, 1);
  EXPECT_EQ(hr, E_NOINTERFACE);
  EXPECT_EQ(queue.Receive(down.Sample(1)), E_UNEXPECTED);
  EXPECT_EQ(down.Out(), 0);
}

}  // namespace
}  // namespace tarvex::test
