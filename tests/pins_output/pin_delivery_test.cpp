// From a frame to what downstream receives, where no file and no graph shows it: segments, refusals, texts.
#include <gtest/gtest.h>

#include "framework/event.h"
#include "tests/pins_output/allocation_count.h"
#include "tests/pins_output/pin_rig.h"

namespace tarvex::test {
namespace {

constexpr REFERENCE_TIME kSecond = 10000000;
constexpr REFERENCE_TIME kOpenStop = 0x7FFFFFFFFFFFFFFF;

TEST(PinDelivery, DurationBeyondAllTimeIsPastNoOpenStop) {
  AudioRig rig;
  rig.Start();
  EXPECT_TRUE(rig.Send(kSecond, kOpenStop));
  ASSERT_TRUE(rig.WaitForSamples(1));
  EXPECT_EQ(rig.sink->Samples().front().stop, kOpenStop);
}

TEST(PinDelivery, SegmentHasTheStopAndRateOfItsRange) {
  AudioRig rig;
  rig.host.SetPlayRange(5 * kSecond, 9 * kSecond, 2.0);
  rig.Start();
  EXPECT_TRUE(rig.Send(6 * kSecond, 0));
  ASSERT_TRUE(rig.WaitForSamples(1));
  EXPECT_EQ(rig.sink->Events().front().stop, 9 * kSecond);
  EXPECT_EQ(rig.sink->Events().front().rate, 2.0);
  EXPECT_EQ(rig.sink->Samples().front().stop, kSecond) << "a frame of unknown duration ends where it starts";
}

// A pin's own new segment must not overtake samples of the one before.
TEST(PinDelivery, NewSegmentStaysBehindQueuedSamples) {
  AudioRig rig(SinkKind::kSlow);
  rig.Start();
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(rig.Send(i));
  rig.pin->DeliverNewSegment(1, 2, 1.0);
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(1));
  EXPECT_EQ(Order(rig.sink->Events()), "nssssssssssne");
}

TEST(PinDelivery, RefusalDownstreamReachesTheWorker) {
  TextLog log;
  AudioRig rig(SinkKind::kRefusing);
  rig.Start();
  EXPECT_TRUE(WaitFor([&] { return !rig.Send(0); }));
  EXPECT_EQ(rig.sink->CountOf(SinkEvent::Kind::kSample), 1U) << "nothing is pressed on a peer that refused";
  EXPECT_EQ(log.CountOf("CMatroskaVideoPin::OnData 8004022b"), 1);
  rig.pin->DeliverEndOfStream();
  EXPECT_TRUE(rig.WaitForEnds(1)) << "the peer can still complete";
}

TEST(PinDelivery, VideoSamplesAreLogged) {
  TextLog log;
  VideoRig video;
  AudioRig audio;
  video.Start();
  video.pin->SetHolding(false);
  audio.Start();
  EXPECT_EQ(log.CountOf("CMatroskaOutputPin::Active"), 2);
  EXPECT_TRUE(video.Send(-800000, 400000));
  EXPECT_TRUE(video.Send(0, 400000, false));
  EXPECT_TRUE(audio.Send(0));
  EXPECT_EQ(log.CountOf("DeliverFrameSample tStart: -800000 tStop: -400000 splice: 1"), 1);
  EXPECT_EQ(log.CountOf("DeliverFrameSample tStart: 0 tStop: 400000 splice: 0"), 1);
  video.Stop();
  audio.Stop();
  EXPECT_EQ(log.CountOf("CMatroskaOutputPin::Inactive"), 2);
}

TEST(PinDelivery, PeerThatRefusesTheAllocatorStaysUnconnected) {
  class Refusing : public TestInputPin {
   public:
    using TestInputPin::TestInputPin;
    HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* /*allocator*/, BOOL /*readOnly*/) override {
      return E_ACCESSDENIED;
    }
  };
  AudioRig rig(SinkKind::kRecording, false);
  const auto filter = MakeCom<TestFilter>(LockRank::kLastFilter);
  auto* input = filter->Add(new Refusing(*filter));
  EXPECT_EQ(rig.pin->Connect(input, nullptr), E_ACCESSDENIED);
  EXPECT_FALSE(rig.pin->IsConnected());
  EXPECT_FALSE(input->IsConnected());
  EXPECT_EQ(rig.pin->Connect(rig.sink->Pin(), nullptr), S_OK);
}

// After as many frames as this have waited for downstream once.
TEST(PinDelivery, SteadyDeliveryAllocatesNothing) {
  AudioRig rig(SinkKind::kCounting);
  CEvent go(CEvent::Mode::kManual);
  rig.sink->OnSample([&](IMediaSample* /*sample*/) { go.Wait(10000); });
  rig.Start();
  const std::vector<std::uint8_t> bytes(50000, 1);
  FrameInfo frame;
  frame.data = bytes.data();
  frame.size = static_cast<std::uint32_t>(bytes.size());
  const auto send = [&] {
    for (int i = 0; i < 50; ++i) ASSERT_TRUE(rig.pin->OnData(frame));
  };
  send();
  go.Set();
  ASSERT_TRUE(rig.WaitForSamples(50));
  const std::size_t before = AllocationsOfThisThread();
  send();
  EXPECT_EQ(AllocationsOfThisThread(), before);
}

}  // namespace
}  // namespace tarvex::test
