// The worker thread's request channel where nobody answers: no wait may be without end.
#include "framework/am_thread.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace tarvex::test {
namespace {

enum Command : DWORD { kEcho, kThrow, kCallSelf, kExit };
constexpr auto kNoReply = static_cast<DWORD>(E_UNEXPECTED);

class Worker : public CAMThread {
 public:
  ~Worker() override {
    CallWorker(kExit);
    Close();
  }

 protected:
  DWORD ThreadProc() override {
    for (;;) {
      const DWORD command = GetRequest();
      if (command == kThrow) throw std::runtime_error("worker failed");
      Reply(command == kCallSelf ? CallWorker(kEcho) : 42);
      if (command == kExit) return 0;
    }
  }
};

TEST(WorkerThread, NobodyWaitsForOneThatThrewThatIsGoneOrThatIsItself) {
  Worker worker;
  EXPECT_EQ(worker.CallWorker(kEcho), kNoReply) << "there is no thread";
  ASSERT_TRUE(worker.Create());
  EXPECT_EQ(worker.CallWorker(kCallSelf), kNoReply);
  EXPECT_EQ(worker.CallWorker(kEcho), 42u);
  EXPECT_EQ(worker.CallWorker(kThrow), kNoReply);
  EXPECT_EQ(worker.CallWorker(kEcho), kNoReply);
  worker.Close();
  ASSERT_TRUE(worker.Create());
  EXPECT_EQ(worker.CallWorker(kEcho), 42u);
}

}  // namespace
}  // namespace tarvex::test
