// The output queue's end: whatever downstream does, its owner gets on.
#include <gtest/gtest.h>

#include "framework/output_queue.h"
#include "framework/thread.h"
#include "tests/framework/fakes.h"

namespace tarvex::test {
namespace {

constexpr ULONGLONG kOneSecond = 1000;

std::unique_ptr<COutputQueue> MakeQueue(Downstream& down) {
  HRESULT hr = S_OK;
  auto queue = std::make_unique<COutputQueue>(down.input, &hr, false, true, 200, true, 200);
  EXPECT_EQ(hr, S_OK);
  return queue;
}

void Send(COutputQueue& queue, Downstream& down, int mark) {
  queue.Receive(down.Sample(mark));
  queue.SendAnyway();
}

TEST(QueueDestruction, WaitingSamplesAreReleased) {
  Downstream down;
  CEvent entered;
  CEvent go(CEvent::Mode::kManual);
  down.input->onSample = [&](int) {
    entered.Set();
    go.Wait(30);
    return S_OK;
  };
  auto queue = MakeQueue(down);
  for (int i = 0; i < 20; ++i) Send(*queue, down, i);
  ASSERT_TRUE(entered.Wait(5000));
  queue.reset();
  EXPECT_EQ(down.Out(), 0);
}

TEST(QueueDestruction, ReceiveThatBlocksUntilAFlushIsFreed) {
  Downstream down;
  CEvent entered;
  CEvent flushed(CEvent::Mode::kManual);
  down.input->onFlush = [&] { flushed.Set(); };
  down.input->onSample = [&](int) {
    entered.Set();
    flushed.Wait();
    return S_FALSE;
  };
  auto queue = MakeQueue(down);
  Send(*queue, down, 1);
  Send(*queue, down, 2);
  ASSERT_TRUE(entered.Wait(5000));
  const ULONGLONG start = MonotonicMilliseconds();
  queue.reset();
  EXPECT_LT(MonotonicMilliseconds() - start, kOneSecond);
  EXPECT_EQ(down.input->Words(), (std::vector<std::string>{"s:1", "flush", "endflush"}));
  EXPECT_EQ(down.Out(), 0);
}

TEST(QueueDestruction, ReceiveThatNeverReturnsIsLeftBehindAndTouchesNothingGone) {
  Downstream down;
  CEvent entered;
  CEvent release(CEvent::Mode::kManual);
  CEvent left;
  down.input->onSample = [&](int) {
    entered.Set();
    release.Wait();
    left.Set();
    return S_OK;
  };
  auto queue = MakeQueue(down);
  Send(*queue, down, 1);
  Send(*queue, down, 2);
  ASSERT_TRUE(entered.Wait(5000));
  const ULONGLONG start = MonotonicMilliseconds();
  queue.reset();
  EXPECT_LT(MonotonicMilliseconds() - start, kOneSecond);
  release.Set();
  ASSERT_TRUE(left.Wait(5000));
  // The sample that was downstream comes back, the other one never went there.
  while (down.Out() != 0) SleepMilliseconds(1);
  EXPECT_EQ(down.input->Words(), (std::vector<std::string>{"s:1", "flush", "endflush"}));
}

TEST(QueueDestruction, FromTheQueuesOwnThread) {
  Downstream down;
  auto queue = MakeQueue(down);
  CEvent sent;
  CEvent destroyed;
  down.input->onSample = [&](int) {
    sent.Wait(5000);  // no other call may be in progress when the owner destroys its queue
    queue.reset();
    destroyed.Set();
    return S_OK;
  };
  queue->Receive(down.Sample(1));
  queue->EOS();
  sent.Set();
  ASSERT_TRUE(destroyed.Wait(5000));
  while (down.Out() != 0) SleepMilliseconds(1);
  EXPECT_EQ(down.input->Words(), std::vector<std::string>{"s:1"});
}

TEST(QueueDestruction, WhileIdleIsQuickAndFlushesNothing) {
  Downstream down;
  for (int i = 0; i < 50; ++i) {
    auto queue = MakeQueue(down);
    if (i % 2 == 0) queue->NewSegment(0, 1, 1.0);
  }
  for (const std::string& word : down.input->Words()) EXPECT_EQ(word, "segment:0");
}

}  // namespace
}  // namespace tarvex::test
