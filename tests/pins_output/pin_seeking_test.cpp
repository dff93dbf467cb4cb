// IMediaSeeking of the output pins, and the arithmetic under it.
#include "pins/output/pin_seeking.h"

#include <gtest/gtest.h>

#include <limits>

#include "framework/message_error.h"
#include "tests/pins_output/pin_rig.h"

namespace tarvex::test {
namespace {

constexpr DWORD kNone = AM_SEEKING_NoPositioning;
constexpr DWORD kAbsolute = AM_SEEKING_AbsolutePositioning;
constexpr DWORD kRelative = AM_SEEKING_RelativePositioning;
constexpr DWORD kIncremental = AM_SEEKING_IncrementalPositioning;
constexpr REFERENCE_TIME kFirstTime = std::numeric_limits<REFERENCE_TIME>::min();
constexpr REFERENCE_TIME kLastTime = std::numeric_limits<REFERENCE_TIME>::max();
constexpr REFERENCE_TIME kDuration = 1000000000;  // of the host

/// A connected video pin and an unconnected audio pin of one filter.
class Seeking : public testing::Test {
 protected:
  Seeking() : audio(new CMatroskaAudioPin(rig.upstream.Get(), &rig.upstream->lock, &rig.host, &hr, OLESTR("Audio"))) {
    rig.upstream->Add(audio);
    rig.host.pins.push_back(audio);
    rig.host.frameDuration = 400000;
    EXPECT_EQ(audio->SetTrack(TrackOf(2, MEDIATYPE_Audio)), S_OK);
  }

  void ExpectRange(REFERENCE_TIME start, REFERENCE_TIME stop) {
    EXPECT_EQ(rig.host.Range().start, start);
    EXPECT_EQ(rig.host.Range().stop, stop);
  }
  HRESULT hr = S_OK;
  VideoRig rig;
  CMatroskaAudioPin* audio;
};

TEST_F(Seeking, CapabilitiesAreTheFiveThatASplitterHas) {
  DWORD bits = 0;
  EXPECT_EQ(rig.pin->GetCapabilities(&bits), S_OK);
  EXPECT_EQ(bits, 0x37U);
  EXPECT_EQ(rig.pin->CheckCapabilities(&bits), S_OK);
  bits = AM_SEEKING_CanGetCurrentPos | AM_SEEKING_CanGetDuration;
  EXPECT_EQ(rig.pin->CheckCapabilities(&bits), S_FALSE);
  EXPECT_EQ(bits, static_cast<DWORD>(AM_SEEKING_CanGetCurrentPos | AM_SEEKING_CanGetDuration));
}

TEST_F(Seeking, TimeFormatIsOneForAllPinsAndOnlyVideoCountsFrames) {
  EXPECT_EQ(rig.pin->IsFormatSupported(&TIME_FORMAT_MEDIA_TIME), S_OK);
  EXPECT_EQ(rig.pin->IsFormatSupported(&TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(rig.pin->IsFormatSupported(&TIME_FORMAT_SAMPLE), S_FALSE);
  EXPECT_EQ(audio->IsFormatSupported(&TIME_FORMAT_FRAME), S_FALSE);
  EXPECT_EQ(audio->SetTimeFormat(&TIME_FORMAT_FRAME), E_FAIL);
  EXPECT_EQ(rig.pin->IsUsingTimeFormat(&TIME_FORMAT_MEDIA_TIME), S_OK);
  EXPECT_EQ(rig.pin->SetTimeFormat(&TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(audio->IsUsingTimeFormat(&TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(audio->IsUsingTimeFormat(&TIME_FORMAT_MEDIA_TIME), S_FALSE);
  GUID format{};
  EXPECT_EQ(audio->GetTimeFormat(&format), S_OK);
  EXPECT_TRUE(format == TIME_FORMAT_FRAME);
  EXPECT_EQ(audio->QueryPreferredFormat(&format), S_OK);
  EXPECT_TRUE(format == TIME_FORMAT_MEDIA_TIME);
}

TEST_F(Seeking, ConversionsDivideBothWays) {
  LONGLONG target = -1;
  EXPECT_EQ(rig.pin->ConvertTimeFormat(&target, &TIME_FORMAT_FRAME, 4000000, nullptr), S_OK);
  EXPECT_EQ(target, 10);
  EXPECT_EQ(rig.pin->ConvertTimeFormat(&target, nullptr, 10, &TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(target, 0);
  target = -1;
  EXPECT_EQ(audio->ConvertTimeFormat(&target, &TIME_FORMAT_FRAME, 4000000, nullptr), S_OK);
  EXPECT_EQ(target, 0) << "a track without frame duration";
  EXPECT_EQ(rig.pin->ConvertTimeFormat(&target, &TIME_FORMAT_SAMPLE, 7, &TIME_FORMAT_SAMPLE), S_OK);
  EXPECT_EQ(target, 7);
  EXPECT_EQ(rig.pin->ConvertTimeFormat(&target, &TIME_FORMAT_SAMPLE, 8, nullptr), E_INVALIDARG);
  EXPECT_EQ(target, 7);
}

TEST_F(Seeking, PositionsAreTheFiltersInThePinsFormat) {
  rig.host.SetPlayRange(4000000, kLastTime, 1.0);
  LONGLONG current = 0;
  LONGLONG stop = 0;
  EXPECT_EQ(rig.pin->GetPositions(&current, &stop), S_OK);
  EXPECT_EQ(current, 4000000);
  EXPECT_EQ(stop, kDuration) << "an open stop is the duration";
  EXPECT_EQ(rig.pin->SetTimeFormat(&TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(rig.pin->GetPositions(&current, &stop), S_OK);
  EXPECT_EQ(current, 10);
  EXPECT_EQ(stop, 2500);
  EXPECT_EQ(rig.pin->GetStopPosition(&current), S_OK);
  EXPECT_EQ(current, 2500);
  EXPECT_EQ(rig.pin->GetDuration(&stop), S_OK);
  EXPECT_EQ(stop, 2500);
  EXPECT_EQ(rig.pin->GetAvailable(&current, &stop), S_OK);
  EXPECT_EQ(current, 0);
  EXPECT_EQ(stop, kDuration) << "not converted";
  EXPECT_EQ(rig.pin->GetAvailable(nullptr, nullptr), S_OK);
  EXPECT_EQ(rig.pin->GetPreroll(&stop), S_OK);
  EXPECT_EQ(stop, 0);
  EXPECT_EQ(rig.pin->GetCurrentPosition(&current), E_NOTIMPL);
  EXPECT_EQ(rig.pin->GetPositions(&current, nullptr), E_POINTER);
}

TEST_F(Seeking, EveryOperationOnPositions) {
  const struct {
    const char* what;
    bool frames;
    REFERENCE_TIME current, stop;
    DWORD currentMode, stopMode;
    REFERENCE_TIME newStart, newStop;      // from 100 to 600
    REFERENCE_TIME currentBack, stopBack;  // what the caller's values become
  } cases[] = {
      {"the mode of the current position counts for both", false, 200, 900, kAbsolute, kNone, 200, 900, 200, 900},
      {"relative", false, 50, 7, kRelative, kRelative, 150, 607, 50, 7},
      {"incremental", false, 50, 7, kIncremental, kIncremental, 150, 607, 50, 7},
      {"none sets what is there", false, 200, 900, kNone, kNone, 100, 600, 200, 900},
      {"beyond the duration", false, kDuration + 1, kDuration + 2, kAbsolute | AM_SEEKING_SeekToKeyFrame, kAbsolute,
       kDuration, kDuration, kDuration, kDuration},
      {"frames: the start comes back converted", true, 800000, 4000000, kAbsolute, kAbsolute, 2, 10, 2, 4000000},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    const GUID& format = each.frames ? TIME_FORMAT_FRAME : TIME_FORMAT_MEDIA_TIME;
    EXPECT_EQ(rig.pin->SetTimeFormat(&format), S_OK);
    rig.host.SetPlayRange(100, 600, 2.5);
    const int moves = rig.host.moves;
    LONGLONG current = each.current;
    LONGLONG stop = each.stop;
    EXPECT_EQ(rig.pin->SetPositions(&current, each.currentMode, &stop, each.stopMode), S_OK);
    ExpectRange(each.newStart, each.newStop);
    EXPECT_EQ(rig.host.Range().rate, 2.5);
    EXPECT_EQ(rig.host.moves, moves + 1) << "streaming starts again, also from where it was";
    EXPECT_EQ(current, each.currentBack);
    EXPECT_EQ(stop, each.stopBack);
  }
}

// Applications give a null stop with AM_SEEKING_NoPositioning.
TEST_F(Seeking, NullPositionStaysAsItIs) {
  TextLog log;
  rig.host.SetPlayRange(5, 600, 1.0);
  LONGLONG time = 100;
  EXPECT_EQ(rig.pin->SetPositions(&time, kAbsolute, nullptr, kNone), S_OK);
  ExpectRange(100, 600);
  EXPECT_EQ(log.CountOf("CMatroskaOutputPin::SetPositions 100\n"), 1);
  EXPECT_EQ(log.CountOf("AM_SEEKING_AbsolutePositioning 100"), 1);
  EXPECT_EQ(rig.pin->SetPositions(nullptr, kRelative, &time, kRelative), S_OK);
  ExpectRange(100, 700);
}

TEST_F(Seeking, OnlyTheFirstConnectedPinMovesThePositions) {
  LONGLONG time = 50;
  LONGLONG other = 100;
  EXPECT_EQ(audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK) << "not connected: it does not count";
  EXPECT_EQ(rig.pin->SetPositions(&other, kAbsolute, &other, kAbsolute), S_OK);
  const auto sink = CSinkFilter::Create(SinkKind::kRecording);
  ASSERT_EQ(audio->Connect(sink->Pin(), nullptr), S_OK);
  EXPECT_EQ(audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK);
  ExpectRange(100, 100);
  EXPECT_EQ(time, 50);

  rig.pin->Disconnect();
  EXPECT_EQ(audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK);
  EXPECT_EQ(rig.host.Range().start, 50) << "a disconnected pin gives the right away";
  audio->Disconnect();
  sink->Pin()->Disconnect();
}

TEST(SeekPosition, UnknownModeIsAnError) {
  REFERENCE_TIME start = 1;
  REFERENCE_TIME stop = 2;
  try {
    applySeekPosition(start, 3, stop, 4, 4);
    ADD_FAILURE();
  } catch (const MessageError& error) {
    EXPECT_STREQ(error.what(), "CMatroskaOutputPin::applySeekPosition unknown flags");
  }
  EXPECT_EQ(start, 1);
}

TEST(SeekPosition, TimesStayWithinTheirRange) {
  EXPECT_EQ(AddTimes(kLastTime, 1), kLastTime);
  EXPECT_EQ(AddTimes(kFirstTime, -1), kFirstTime);
  EXPECT_EQ(AddTimes(-5, 3), -2);
  EXPECT_EQ(SubtractTimes(kFirstTime, 1), kFirstTime);
  EXPECT_EQ(SubtractTimes(kLastTime, -1), kLastTime);
  EXPECT_EQ(SubtractTimes(0, kFirstTime), kLastTime);
  EXPECT_EQ(SubtractTimes(3, 5), -2);
}

}  // namespace
}  // namespace tarvex::test
