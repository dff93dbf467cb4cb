// Stops and flushes that meet a worker, or come from the queue, in the middle of something.
#include <gtest/gtest.h>

#include <vector>

#include "framework/event.h"
#include "framework/thread.h"
#include "tests/pins_output/pin_rig.h"

namespace tarvex::test {
namespace {

constexpr DWORD kLongestStop = 1000;  // milliseconds

// Downstream may keep samples through a flush; the worker must not wait for them.
TEST(PinStopping, FlushWhileTheRingIsFull) {
  AudioRig rig;
  std::vector<ComPtr<IMediaSample>> kept;
  rig.sink->OnSample([&](IMediaSample* sample) { kept.emplace_back(sample); });
  rig.Start();
  CEvent refused{CEvent::Mode::kManual};
  CThread worker;
  ASSERT_EQ(worker.Start([&] {
    while (rig.Send(0, 1, true, 2000000)) {
    }
    refused.Set();
  }),
            S_OK);
  ASSERT_TRUE(rig.WaitForSamples(5));
  ASSERT_FALSE(refused.Wait(20)) << "it should be waiting for room";
  rig.pin->DeliverBeginFlush();
  EXPECT_TRUE(refused.Wait(kLongestStop));
  worker.Join();
  rig.pin->DeliverEndFlush();
  kept.clear();
  rig.sink->OnSample(nullptr);
  EXPECT_TRUE(rig.Send(0));
  EXPECT_TRUE(rig.WaitForSamples(6));
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
