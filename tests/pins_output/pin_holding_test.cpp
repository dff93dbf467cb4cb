// Frames that are held back: what releases them, in which order, and what becomes of them at a stop.
#include <gtest/gtest.h>

#include "tests/pins_output/pin_rig.h"

namespace tarvex::test {
namespace {

std::vector<REFERENCE_TIME> Starts(const std::vector<SinkEvent>& samples) {
  std::vector<REFERENCE_TIME> starts;
  for (const SinkEvent& sample : samples) starts.push_back(sample.start);
  return starts;
}

using Times = std::vector<REFERENCE_TIME>;

TEST(PinHolding, HeldFramesGoInOrderRelativeToTheNewStart) {
  AudioRig rig;
  rig.Start();
  rig.pin->SetHolding(true);
  for (const REFERENCE_TIME start : {100, 300, 200, 400}) EXPECT_TRUE(rig.Send(start, 0));
  rig.pin->DropHeldBefore(200);
  rig.host.SetStartPosition(300);
  EXPECT_EQ(rig.pin->FlushPending(), S_OK);
  rig.pin->SetHolding(false);
  EXPECT_TRUE(rig.Send(500, 0));
  ASSERT_TRUE(rig.WaitForSamples(3));
  EXPECT_EQ(Starts(rig.sink->Samples()), (Times{0, 100, 200}));
  EXPECT_EQ(Order(rig.sink->Events()), "nsss");
  EXPECT_EQ(rig.sink->Events().front().start, 300);
}

TEST(PinHolding, NothingIsDeliveredWhileHolding) {
  AudioRig rig;
  rig.Start();
  rig.pin->SetHolding(true);
  EXPECT_TRUE(rig.Send(0));
  rig.pin->SetHolding(false);
  EXPECT_TRUE(rig.Send(7, 0));
  ASSERT_TRUE(rig.WaitForSamples(1));
  EXPECT_EQ(Starts(rig.sink->Samples()), Times{7});
}

TEST(PinHolding, FlushedFramesAreGoneAfterwards) {
  AudioRig rig;
  rig.Start();
  rig.pin->SetHolding(true);
  EXPECT_TRUE(rig.Send(0));
  EXPECT_EQ(rig.pin->FlushPending(), S_OK);
  EXPECT_EQ(rig.pin->FlushPending(), S_OK);
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(1));
  EXPECT_EQ(Order(rig.sink->Events()), "nse");
}

TEST(PinHolding, EndOfStreamGoesBehindHeldFrames) {
  AudioRig rig;
  rig.host.SetPlayRange(0, 1000, 1.0);
  rig.Start();
  rig.pin->SetHolding(true);
  EXPECT_TRUE(rig.Send(0, 10));
  EXPECT_TRUE(rig.Send(500, 600)) << "past the stop";
  EXPECT_TRUE(rig.Send(20, 10)) << "after the end";
  rig.pin->DeliverEndOfStream();
  rig.pin->SetHolding(false);
  EXPECT_EQ(rig.pin->FlushPending(), S_OK);
  ASSERT_TRUE(rig.WaitForEnds(1));
  rig.Stop();
  EXPECT_EQ(Order(rig.sink->Events()), "nse");
}

TEST(PinHolding, HeldFramesAndTheirEndAreForgottenByAFlush) {
  AudioRig rig;
  rig.Start();
  rig.pin->SetHolding(true);
  EXPECT_TRUE(rig.Send(0));
  rig.pin->DeliverEndOfStream();
  rig.Flush();
  EXPECT_EQ(rig.pin->FlushPending(), S_OK);
  rig.pin->SetHolding(false);
  EXPECT_TRUE(rig.Send(7, 0));
  ASSERT_TRUE(rig.WaitForSamples(1));
  rig.Stop();
  EXPECT_EQ(Order(rig.sink->Events()), "bfns");
}

TEST(PinHolding, HeldFramesDoNotComeOutInTheNextRun) {
  AudioRig rig;
  rig.Start();
  rig.pin->SetHolding(true);
  EXPECT_TRUE(rig.Send(0));
  rig.Stop();
  rig.Start();
  EXPECT_EQ(rig.pin->FlushPending(), S_OK);
  rig.pin->SetHolding(false);
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(1));
  EXPECT_EQ(Order(rig.sink->Events()), "e");
}

TEST(PinHolding, FirstFailureEndsTheReleaseAndDropsTheRest) {
  AudioRig rig;
  rig.Start();
  rig.pin->SetHolding(true);
  EXPECT_TRUE(rig.Send(0));
  EXPECT_TRUE(rig.Send(1));
  EXPECT_EQ(rig.pin->CBaseOutputPin::Inactive(), S_OK);  // the buffer is gone, the queue is not
  EXPECT_EQ(rig.pin->FlushPending(), VFW_E_NOT_COMMITTED);
  EXPECT_EQ(rig.pin->CBaseOutputPin::Active(), S_OK);
  EXPECT_EQ(rig.pin->FlushPending(), S_OK);
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(1));
  EXPECT_EQ(rig.sink->CountOf(SinkEvent::Kind::kSample), 0U);
}

}  // namespace
}  // namespace tarvex::test
