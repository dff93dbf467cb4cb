// Stops and flushes that meet a worker, or come from the queue, in the middle of something.
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "framework/condition_variable.h"
#include "framework/event.h"
#include "framework/thread.h"
#include "tests/pins_output/pin_rig.h"

namespace tarvex::test {
namespace {

constexpr ULONGLONG kLongestStop = 1000;  // milliseconds

/// Sends large frames until one is refused, or until told to end.
class Worker {
 public:
  /// `insist`: goes on after refusals.
  template <class AnyRig>
  explicit Worker(AnyRig& rig, std::size_t size = 2000000, bool insist = false) {
    EXPECT_EQ(m_thread.Start([this, &rig, size, insist] {
      while (!m_end && (rig.Send(0, 1, true, size) || insist)) {
      }
      m_done.Set();
    }),
              S_OK);
  }
  ~Worker() { End(); }

  bool HasEnded(DWORD milliseconds) { return m_done.Wait(milliseconds); }
  void End() {
    m_end = true;
    m_thread.Join();
  }

 private:
  std::atomic<bool> m_end{false};
  CEvent m_done{CEvent::Mode::kManual};
  CThread m_thread;
};

// Downstream may keep samples through a flush; the worker must not wait for them.
TEST(PinStopping, FlushWhileTheRingIsFull) {
  AudioRig rig;
  std::vector<ComPtr<IMediaSample>> kept;
  rig.sink->OnSample([&](IMediaSample* sample) { kept.emplace_back(sample); });
  rig.Start();
  {
    Worker worker(rig);
    ASSERT_TRUE(rig.WaitForSamples(5));
    ASSERT_FALSE(worker.HasEnded(20)) << "it should be waiting for room";
    rig.pin->DeliverBeginFlush();
    EXPECT_TRUE(worker.HasEnded(kLongestStop));
  }
  rig.pin->DeliverEndFlush();
  kept.clear();
  rig.sink->OnSample(nullptr);
  EXPECT_TRUE(rig.Send(0));
  EXPECT_TRUE(rig.WaitForSamples(6));
}

// The worker may still be at a frame when a pin is deactivated; neither may see the other's half-done work.
TEST(PinStopping, DeactivationMeetsDelivery) {
  VideoRig rig(SinkKind::kCounting);
  rig.Start();
  Worker worker(rig, 200000, true);
  for (int i = 0; i < 20; ++i) {
    SleepMilliseconds(2);
    EXPECT_EQ(rig.pin->Inactive(), S_OK);
    EXPECT_EQ(rig.pin->Active(), S_OK);
  }
  worker.End();
}

TEST(PinStopping, FlushesMeetDelivery) {
  AudioRig rig(SinkKind::kCounting);
  rig.Start();
  Worker worker(rig, 200000, true);
  for (int i = 0; i < 50; ++i) {
    SleepMilliseconds(1);
    rig.pin->SetHolding(i % 2 == 0);
    rig.Flush();
  }
  rig.pin->SetHolding(false);
  worker.End();
}

// An application that seeks in its sample callback does so on the queue's own thread.
TEST(PinStopping, FlushFromTheQueuesOwnThread) {
  AudioRig rig;
  CEvent flushed{CEvent::Mode::kManual};
  rig.sink->OnSample([&](IMediaSample* /*sample*/) {
    if (flushed.Check()) return;
    rig.Flush();
    flushed.Set();
  });
  rig.Start();
  EXPECT_TRUE(rig.Send(0));
  ASSERT_TRUE(flushed.Wait(10000));
  EXPECT_TRUE(WaitFor([&] {
    rig.Send(7, 0);
    return rig.sink->CountOf(SinkEvent::Kind::kNewSegment) == 2;
  })) << "delivery goes on with a new segment";
}

TEST(PinStopping, StopFromTheQueuesOwnThread) {
  AudioRig rig;
  CEvent stopped{CEvent::Mode::kManual};
  rig.sink->OnSample([&](IMediaSample* /*sample*/) {
    rig.Stop();
    stopped.Set();
  });
  rig.Start();
  EXPECT_TRUE(rig.Send(0));
  ASSERT_TRUE(stopped.Wait(10000));
  EXPECT_FALSE(rig.Send(0));
}

}  // namespace
}  // namespace tarvex::test
