// The output queue's end: whatever downstream does, its owner gets on.
#include <gtest/gtest.h>

#include <algorithm>

#include "framework/output_queue.h"
#include "tests/framework/downstream.h"

namespace tarvex::test {
namespace {

constexpr ULONGLONG kOneSecond = 1000;

std::unique_ptr<COutputQueue> MakeQueue(Downstream& down) {
  HRESULT hr = S_OK;
  auto queue = std::make_unique<COutputQueue>(down.Pin(), &hr, 200, 200);
  EXPECT_EQ(hr, S_OK);
  return queue;
}

void Send(COutputQueue& queue, Downstream& down, int mark) {
  queue.Receive(down.Sample(mark));
  queue.SendAnyway();
}

enum class Receive { kReturnsSoon, kWaitsForAFlush, kNeverReturns };

TEST(QueueDestruction, TakesLessThanASecondWhateverReceiveDoes) {
  for (const Receive receive : {Receive::kReturnsSoon, Receive::kWaitsForAFlush, Receive::kNeverReturns}) {
    SCOPED_TRACE(static_cast<int>(receive));
    Downstream down;
    Event entered;
    Event end(Event::Mode::kManual);
    Event left;
    down.onSample = [&](int) {
      entered.Set();
      if (receive == Receive::kWaitsForAFlush) down.WaitForFlush();
      if (receive != Receive::kWaitsForAFlush) end.Wait(receive == Receive::kReturnsSoon ? 30 : INFINITE);
      left.Set();
      return S_OK;
    };
    auto queue = MakeQueue(down);
    for (int mark = 1; mark <= 20; ++mark) Send(*queue, down, mark);
    ASSERT_TRUE(entered.Wait(5000));
    const ULONGLONG start = MonotonicMilliseconds();
    queue.reset();
    EXPECT_LT(MonotonicMilliseconds() - start, kOneSecond);
    end.Set();
    ASSERT_TRUE(left.Wait(5000));
    // The sample that was downstream comes back, the others never went there.
    while (down.Out() != 0) SleepMilliseconds(1);
    const std::vector<std::string> words = down.Words();
    const bool unflushed = receive == Receive::kReturnsSoon && words == std::vector<std::string>{"s:1"};
    EXPECT_TRUE(unflushed || words == (std::vector<std::string>{"s:1", "flush", "endflush"}));
  }
}

TEST(QueueDestruction, FromTheQueuesOwnThread) {
  Downstream down;
  auto queue = MakeQueue(down);
  Event sent;
  Event destroyed;
  down.onSample = [&](int) {
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
  EXPECT_EQ(down.Words(), std::vector<std::string>{"s:1"});
}

// A seek's flush meets a stop: the one that comes second must not leave downstream flushing.
TEST(QueueDestruction, AFlushMeanwhileIsEndedForDownstream) {
  for (int round = 0; round < 20; ++round) {
    Downstream down;
    down.onSample = [&](int) {
      down.WaitForFlush();
      return S_OK;
    };
    const std::shared_ptr<COutputQueue> queue = MakeQueue(down);
    for (int mark = 1; mark <= 3; ++mark) Send(*queue, down, mark);
    Thread seek;
    ASSERT_EQ(seek.Start([&] {
      // Before the end, while it waits for the thread, and while it flushes downstream itself.
      SleepMilliseconds(static_cast<DWORD>(round) * 3);
      queue->BeginFlush();
      queue->EndFlush();
    }),
              S_OK);
    const ULONGLONG start = MonotonicMilliseconds();
    COutputQueue::End(std::span(&queue, 1));
    EXPECT_LT(MonotonicMilliseconds() - start, kOneSecond);
    seek.Join();
    EXPECT_FALSE(down.Pin()->IsFlushing()) << "round " << round;
    const std::vector<std::string> words = down.Words();
    EXPECT_EQ(std::count(words.begin(), words.end(), "flush"), std::count(words.begin(), words.end(), "endflush"));
  }
}

// The same, where the end has come and gone while downstream is being told of the flush.
TEST(QueueDestruction, AFlushThatDownstreamLearnsOfBehindTheEndIsEndedToo) {
  Downstream down;
  const std::shared_ptr<COutputQueue> queue = MakeQueue(down);
  down.sink->BeforeFlush([&] { COutputQueue::End(std::span(&queue, 1)); });
  Send(*queue, down, 1);
  queue->BeginFlush();
  queue->EndFlush();
  EXPECT_FALSE(down.Pin()->IsFlushing());
  down.sink->BeforeFlush([] {});
  queue->BeginFlush();
  EXPECT_FALSE(down.Pin()->IsFlushing()) << "nobody would end it, whose queue has ended";
  queue->EndFlush();
}

TEST(QueueDestruction, WhileIdleIsQuickAndFlushesNothing) {
  Downstream down;
  for (int i = 0; i < 50; ++i) {
    auto queue = MakeQueue(down);
    if (i % 2 == 0) queue->NewSegment(0, 1, 1.0);
  }
  for (const std::string& word : down.Words()) EXPECT_EQ(word, "segment:0");
}

}  // namespace
}  // namespace tarvex::test
