// The worker thread's request channel.
#include "framework/am_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace tarvex::test {
namespace {

enum Command : DWORD { kEcho = 1, kBusy = 2, kThrow = 3, kCallSelf = 4, kExit = 99 };

class Worker : public CAMThread {
 public:
  ~Worker() override {
    if (ThreadExists()) {
      CallWorker(kExit);
      Close();
    }
  }
  CThread Take() { return TakeThread(); }

  std::atomic<DWORD> seenWhileBusy{0};
  std::atomic<DWORD> selfCall{0};

 protected:
  DWORD ThreadProc() override {
    for (;;) {
      switch (GetRequest()) {
        case kBusy:
          Reply(0);
          WorkUntilRequested();
          break;
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

 private:
  void WorkUntilRequested() {
    DWORD command = 0;
    while (!CheckRequest(&command)) SleepMilliseconds(1);
    seenWhileBusy = command;
  }
};

TEST(WorkerThread, RepliesToEachCommand) {
  Worker worker;
  ASSERT_TRUE(worker.Create());
  EXPECT_FALSE(worker.Create());
  EXPECT_EQ(worker.CallWorker(kEcho), 42u);
  EXPECT_EQ(worker.CallWorker(kEcho), 42u);
  EXPECT_EQ(worker.CallWorker(kExit), 7u);
  worker.Close();
  EXPECT_FALSE(worker.ThreadExists());
}

TEST(WorkerThread, PolledCommandStaysPendingForTheNextGetRequest) {
  Worker worker;
  ASSERT_TRUE(worker.Create());
  EXPECT_EQ(worker.CallWorker(kBusy), 0u);
  EXPECT_EQ(worker.CallWorker(kEcho), 42u);
  EXPECT_EQ(worker.seenWhileBusy, DWORD{kEcho});
}

TEST(WorkerThread, CallWithoutAThreadDoesNotWait) {
  Worker worker;
  EXPECT_EQ(worker.CallWorker(kEcho), static_cast<DWORD>(E_UNEXPECTED));
}

TEST(WorkerThread, ExceptionEndsTheThreadAndReleasesTheCaller) {
  Worker worker;
  ASSERT_TRUE(worker.Create());
  EXPECT_EQ(worker.CallWorker(kThrow), static_cast<DWORD>(E_UNEXPECTED));
  EXPECT_EQ(worker.CallWorker(kEcho), static_cast<DWORD>(E_UNEXPECTED));
  worker.Close();
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
  CThread thread = worker.Take();
  EXPECT_FALSE(worker.ThreadExists());
  thread.Join();
  EXPECT_TRUE(worker.Create());
}

}  // namespace
}  // namespace tarvex::test
