// The worker thread's request channel where nobody answers: no wait may be without end. And what it waits with.
#include "framework/am_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

#include "framework/event.h"

namespace tarvex::test {
namespace {

enum Command : DWORD { kEcho = 1, kThrow = 2, kCallSelf = 3, kExit = 99 };

class Worker : public CAMThread {
 public:
  ~Worker() override {
    if (ThreadExists()) {
      CallWorker(kExit);
      Close();
    }
  }
  Thread Take() { return TakeThread(); }

  std::atomic<DWORD> selfCall{0};

 protected:
  DWORD ThreadProc() override {
    for (;;) {
      switch (GetRequest()) {
        case kThrow:
          throw std::runtime_error("worker failed");
        case kCallSelf:
          Reply(0);
          selfCall = CallWorker(kEcho);
          break;
        case kExit:
          Reply(7);
          return 0;
        default:
          Reply(42);
          break;
      }
    }
  }
};

TEST(WorkerThread, ExceptionEndsTheThreadAndReleasesTheCaller) {
  Worker worker;
  ASSERT_TRUE(worker.Create());
  EXPECT_EQ(worker.CallWorker(kThrow), static_cast<DWORD>(E_UNEXPECTED));
  EXPECT_EQ(worker.CallWorker(kEcho), static_cast<DWORD>(E_UNEXPECTED));
  worker.Close();
  EXPECT_EQ(worker.CallWorker(kEcho), static_cast<DWORD>(E_UNEXPECTED)) << "there is no thread";
  ASSERT_TRUE(worker.Create());
  EXPECT_EQ(worker.CallWorker(kEcho), 42u);
}

TEST(WorkerThread, CallFromTheWorkerItselfDoesNotWaitForItself) {
  Worker worker;
  ASSERT_TRUE(worker.Create());
  EXPECT_EQ(worker.CallWorker(kCallSelf), 0u);
  EXPECT_EQ(worker.CallWorker(kEcho), 42u);
  EXPECT_EQ(worker.selfCall, static_cast<DWORD>(E_UNEXPECTED));
}

TEST(WorkerThread, SecondEndDuringTheWaitFindsNoThread) {
  Worker worker;
  ASSERT_TRUE(worker.Create());
  worker.CallWorker(kExit);
  Thread thread = worker.Take();
  EXPECT_FALSE(worker.ThreadExists());
  thread.Join();
  EXPECT_TRUE(worker.Create());
}

TEST(Event, ManualOneStaysSetAndTheOtherEndsOneWait) {
  Event manual(Event::Mode::kManual);
  Event once;
  manual.Set();
  once.Set();
  for (const bool first : {true, false}) {
    EXPECT_TRUE(manual.Wait(0));
    EXPECT_EQ(once.Wait(0), first);
  }
}

}  // namespace
}  // namespace tarvex::test
