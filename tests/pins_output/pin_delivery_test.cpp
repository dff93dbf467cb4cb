// From a frame to what downstream receives: order, times, flags, the end of the stream, refusals.
#include <gtest/gtest.h>

#include "framework/message_error.h"
#include "tests/pins_output/allocation_count.h"
#include "tests/pins_output/pin_rig.h"

namespace tarvex::test {
namespace {

constexpr REFERENCE_TIME kSecond = 10000000;
constexpr REFERENCE_TIME kOpenStop = 0x7FFFFFFFFFFFFFFF;

TEST(PinDelivery, SegmentThenSamplesThenOneEnd) {
  AudioRig rig;
  rig.host.SetPlayRange(0, kOpenStop, 1.5);
  rig.Start();
  EXPECT_TRUE(rig.Send(0));
  EXPECT_TRUE(rig.Send(400000, 400000, false));
  rig.pin->DeliverEndOfStream();
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(1));
  rig.Stop();
  const auto events = rig.sink->Events();
  ASSERT_EQ(Order(events), "nsse");
  EXPECT_EQ(events[0].start, 0);
  EXPECT_EQ(events[0].stop, kOpenStop);
  EXPECT_EQ(events[0].rate, 1.5);
  EXPECT_TRUE(events[1].discontinuity);
  EXPECT_TRUE(events[1].key);
  EXPECT_FALSE(events[2].discontinuity);
  EXPECT_FALSE(events[2].key);
  EXPECT_EQ(events[2].start, 400000);
  EXPECT_EQ(events[2].stop, 800000);
  EXPECT_EQ(events[2].size, 100U);
}

TEST(PinDelivery, TimesCountFromTheStartOfTheSegment) {
  AudioRig rig;
  rig.host.SetPlayRange(10 * kSecond, kOpenStop, 1.0);
  rig.Start();
  EXPECT_TRUE(rig.Send(12 * kSecond, 0));
  ASSERT_TRUE(rig.WaitForSamples(1));
  const SinkEvent sample = rig.sink->Samples().front();
  EXPECT_EQ(sample.start, 2 * kSecond);
  EXPECT_EQ(sample.stop, 2 * kSecond) << "a frame of unknown duration ends where it starts";
}

TEST(PinDelivery, EarlySoundIsDropped) {
  AudioRig rig;
  rig.Start();
  EXPECT_TRUE(rig.Send(-400000, 200000));
  EXPECT_TRUE(rig.Send(-400000, 400000));
  ASSERT_TRUE(rig.WaitForSamples(1));
  EXPECT_EQ(rig.sink->Samples().front().stop, 0) << "what reaches the start is delivered";
  EXPECT_FALSE(rig.sink->Samples().front().preroll);
}

TEST(PinDelivery, EarlyPicturesAreDeliveredAsPreroll) {
  VideoRig rig;
  rig.Start();
  rig.pin->SetHolding(false);
  EXPECT_TRUE(rig.Send(-400000, 200000));
  EXPECT_TRUE(rig.Send(-400000, 400000));
  ASSERT_TRUE(rig.WaitForSamples(2));
  const auto samples = rig.sink->Samples();
  EXPECT_TRUE(samples[0].preroll);
  EXPECT_EQ(samples[0].start, -400000);
  EXPECT_EQ(samples[0].stop, -200000);
  EXPECT_FALSE(samples[1].preroll);
}

TEST(PinDelivery, EmptyFrameIsASampleToo) {
  SubtitleRig rig;
  rig.Start();
  EXPECT_TRUE(rig.Send(0, 1, true, 0));
  EXPECT_TRUE(rig.Send(1, 1, true, 10));
  ASSERT_TRUE(rig.WaitForSamples(2));
  EXPECT_EQ(rig.sink->Samples()[0].size, 0U);
  EXPECT_EQ(rig.sink->Samples()[1].size, 10U);
}

TEST(PinDelivery, FirstFramePastTheStopEndsTheStreamOnce) {
  AudioRig rig;
  rig.host.SetPlayRange(0, kSecond, 1.0);
  rig.Start();
  EXPECT_TRUE(rig.Send(0, kSecond)) << "reaches the stop, not past it";
  EXPECT_TRUE(rig.Send(kSecond / 2, kSecond));
  EXPECT_TRUE(rig.Send(0)) << "dropped, though it would fit";
  EXPECT_TRUE(rig.Send(2 * kSecond));
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(1));
  rig.Stop();
  EXPECT_EQ(Order(rig.sink->Events()), "nse");
}

TEST(PinDelivery, DurationBeyondAllTimeIsPastNoOpenStop) {
  AudioRig rig;
  rig.Start();
  EXPECT_TRUE(rig.Send(kSecond, kOpenStop));
  ASSERT_TRUE(rig.WaitForSamples(1));
  EXPECT_EQ(rig.sink->Samples().front().stop, kOpenStop);
}

TEST(PinDelivery, FlushStartsAFreshSegment) {
  AudioRig rig;
  rig.Start();
  EXPECT_TRUE(rig.Send(0));
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(1));
  rig.host.SetPlayRange(5 * kSecond, 9 * kSecond, 2.0);
  rig.Flush();
  EXPECT_TRUE(rig.Send(6 * kSecond));
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(2));
  const auto events = rig.sink->Events();
  ASSERT_EQ(Order(events), "nsebfnse");
  EXPECT_EQ(events[5].start, 5 * kSecond);
  EXPECT_EQ(events[5].stop, 9 * kSecond);
  EXPECT_EQ(events[5].rate, 2.0);
  EXPECT_TRUE(events[6].discontinuity);
  EXPECT_EQ(events[6].start, kSecond);
}

TEST(PinDelivery, NextRunStartsAFreshSegment) {
  AudioRig rig;
  rig.Start();
  EXPECT_TRUE(rig.Send(0));
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(1));
  rig.Stop();
  rig.Start();
  EXPECT_TRUE(rig.Send(0));
  rig.pin->DeliverEndOfStream();
  ASSERT_TRUE(rig.WaitForEnds(2));
  EXPECT_EQ(Order(rig.sink->Events()), "nsense");
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

TEST(PinDelivery, UnconnectedPinIsActiveWithoutAQueue) {
  AudioRig rig(SinkKind::kRecording, false);
  EXPECT_EQ(rig.pin->Active(), S_OK);
  EXPECT_FALSE(rig.Send(0));
  EXPECT_EQ(rig.pin->DeliverEndOfStream(), S_OK);
  rig.Flush();
}

TEST(PinDelivery, StoppedPinRefusesFrames) {
  AudioRig rig;
  EXPECT_FALSE(rig.Send(0));
  rig.Start();
  EXPECT_TRUE(rig.Send(0));
  rig.Stop();
  EXPECT_FALSE(rig.Send(0));
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

TEST(PinDelivery, FrameLargerThanTheBufferIsAnError) {
  AudioRig rig;
  rig.Start();
  EXPECT_TRUE(rig.Send(0, 1, true, 10485600));
  ASSERT_TRUE(rig.WaitForSamples(1));
  EXPECT_THROW(rig.Send(0, 1, true, 10485601), MessageError);
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

TEST(PinDelivery, SteadyDeliveryAllocatesNothing) {
  AudioRig rig(SinkKind::kCounting);
  rig.Start();
  const std::vector<std::uint8_t> bytes(50000, 1);
  FrameInfo frame;
  frame.data = bytes.data();
  frame.size = static_cast<std::uint32_t>(bytes.size());
  std::size_t sent = 0;
  const auto send = [&](int count) {
    // In small groups, so that the queue stays within the room it has.
    for (int i = 0; i < count; ++i) {
      ASSERT_TRUE(rig.pin->OnData(frame));
      if (++sent % 50 != 0) continue;
      ASSERT_TRUE(rig.WaitForSamples(sent));
    }
  };
  send(200);
  const std::size_t before = AllocationsOfThisThread();
  for (int i = 0; i < 50; ++i) ASSERT_TRUE(rig.pin->OnData(frame));
  EXPECT_EQ(AllocationsOfThisThread(), before);
}

}  // namespace
}  // namespace tarvex::test
