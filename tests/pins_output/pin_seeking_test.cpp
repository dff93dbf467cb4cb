// IMediaSeeking of the output pins, and the arithmetic under it.
#include "pins/output/pin_seeking.h"

#include <gtest/gtest.h>

#include <limits>

#include "framework/message_error.h"
#include "tests/pins_output/pin_rig.h"

namespace tarvex::test {
namespace {

constexpr DWORD kAbsolute = AM_SEEKING_AbsolutePositioning;
constexpr DWORD kRelative = AM_SEEKING_RelativePositioning;
constexpr DWORD kIncremental = AM_SEEKING_IncrementalPositioning;
constexpr REFERENCE_TIME kLastTime = std::numeric_limits<REFERENCE_TIME>::max();

/// A video pin and an audio pin of one filter; the audio pin is connected when asked for.
class Seeking : public testing::Test {
 protected:
  Seeking() : audio(new CMatroskaAudioPin(rig.upstream.Get(), &rig.upstream->lock, &rig.host, &hr, OLESTR("Audio"))) {
    rig.upstream->Add(audio);
    rig.host.pins.push_back(audio);
    rig.host.frameDuration = 400000;
    EXPECT_EQ(audio->SetTrack(TrackOf(2, MEDIATYPE_Audio)), S_OK);
  }

  HRESULT Move(REFERENCE_TIME current, DWORD mode, REFERENCE_TIME stop) {
    return rig.pin->SetPositions(&current, mode, &stop, AM_SEEKING_NoPositioning);
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

TEST_F(Seeking, OnlyVideoCountsFrames) {
  EXPECT_EQ(rig.pin->IsFormatSupported(&TIME_FORMAT_MEDIA_TIME), S_OK);
  EXPECT_EQ(rig.pin->IsFormatSupported(&TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(rig.pin->IsFormatSupported(&TIME_FORMAT_SAMPLE), S_FALSE);
  EXPECT_EQ(audio->IsFormatSupported(&TIME_FORMAT_FRAME), S_FALSE);
}

TEST_F(Seeking, TimeFormatIsOneForAllPins) {
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
  EXPECT_EQ(audio->ConvertTimeFormat(&target, &TIME_FORMAT_FRAME, 4000000, nullptr), S_OK);
  EXPECT_EQ(target, 0) << "a track without frame duration";
  target = -1;
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
  EXPECT_EQ(stop, rig.host.duration) << "an open stop is the duration";
  EXPECT_EQ(rig.pin->SetTimeFormat(&TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(rig.pin->GetPositions(&current, &stop), S_OK);
  EXPECT_EQ(current, 10);
  EXPECT_EQ(stop, 2500);
  EXPECT_EQ(rig.pin->GetStopPosition(&stop), S_OK);
  EXPECT_EQ(stop, 2500);
  EXPECT_EQ(rig.pin->GetDuration(&stop), S_OK);
  EXPECT_EQ(stop, 2500);
  EXPECT_EQ(rig.pin->GetAvailable(&current, &stop), S_OK);
  EXPECT_EQ(current, 0);
  EXPECT_EQ(stop, rig.host.duration) << "not converted";
  EXPECT_EQ(rig.pin->GetAvailable(nullptr, nullptr), S_OK);
  EXPECT_EQ(rig.pin->GetCurrentPosition(&current), E_NOTIMPL);
  EXPECT_EQ(rig.pin->GetPreroll(&current), S_OK);
  EXPECT_EQ(current, 0);
}

TEST_F(Seeking, AbsoluteSeekReplacesBothAndKeepsTheRate) {
  EXPECT_EQ(rig.pin->SetRate(2.5), S_OK);
  EXPECT_EQ(Move(100, kAbsolute, 900), S_OK);
  const PlayRange range = rig.host.Range();
  EXPECT_EQ(range.start, 100);
  EXPECT_EQ(range.stop, 900) << "the mode of the current position counts for the stop position";
  EXPECT_EQ(range.rate, 2.5);
  double rate = 0;
  EXPECT_EQ(audio->GetRate(&rate), S_OK);
  EXPECT_EQ(rate, 2.5);
}

TEST_F(Seeking, BeyondTheDurationIsTheDuration) {
  LONGLONG current = rig.host.duration + 1;
  LONGLONG stop = rig.host.duration + 2;
  EXPECT_EQ(rig.pin->SetPositions(&current, kAbsolute | AM_SEEKING_SeekToKeyFrame, &stop, kAbsolute), S_OK);
  EXPECT_EQ(rig.host.Range().start, rig.host.duration);
  EXPECT_EQ(rig.host.Range().stop, rig.host.duration);
  EXPECT_EQ(current, rig.host.duration);
  EXPECT_EQ(stop, rig.host.duration);
}

TEST_F(Seeking, CallerOfAFrameSeekGetsMediaTimeBack) {
  EXPECT_EQ(rig.pin->SetTimeFormat(&TIME_FORMAT_FRAME), S_OK);
  LONGLONG current = 800000;
  LONGLONG stop = 4000000;
  EXPECT_EQ(rig.pin->SetPositions(&current, kAbsolute, &stop, kAbsolute), S_OK);
  EXPECT_EQ(current, 2) << "the converted value";
  EXPECT_EQ(stop, 4000000) << "left alone";
  EXPECT_EQ(rig.host.Range().start, 2);
  EXPECT_EQ(rig.host.Range().stop, 10);
}

TEST_F(Seeking, RelativeAndIncrementalAddToBoth) {
  for (const DWORD mode : {kRelative, kIncremental}) {
    rig.host.SetPlayRange(10000000, 100000000, 1.0);
    EXPECT_EQ(Move(50000000, mode, 7), S_OK);
    EXPECT_EQ(rig.host.Range().start, 60000000);
    EXPECT_EQ(rig.host.Range().stop, 100000007);
  }
}

TEST_F(Seeking, NoPositioningSetsWhatIsThere) {
  rig.host.SetPlayRange(5, 6, 1.0);
  const int moves = rig.host.moves;
  EXPECT_EQ(Move(100, AM_SEEKING_NoPositioning, 200), S_OK);
  EXPECT_EQ(rig.host.Range().start, 5);
  EXPECT_EQ(rig.host.Range().stop, 6);
  EXPECT_EQ(rig.host.moves, moves + 1) << "streaming starts again from there";
}

// Applications give a null stop with AM_SEEKING_NoPositioning.
TEST_F(Seeking, NullPositionStaysAsItIs) {
  rig.host.SetPlayRange(5, 600, 1.0);
  LONGLONG time = 100;
  EXPECT_EQ(rig.pin->SetPositions(&time, kAbsolute, nullptr, AM_SEEKING_NoPositioning), S_OK);
  EXPECT_EQ(rig.host.Range().start, 100);
  EXPECT_EQ(rig.host.Range().stop, 600);
  EXPECT_EQ(rig.pin->SetPositions(nullptr, kRelative, &time, kRelative), S_OK);
  EXPECT_EQ(rig.host.Range().start, 100);
  EXPECT_EQ(rig.host.Range().stop, 700);
  EXPECT_EQ(rig.pin->GetPositions(&time, nullptr), E_POINTER);
}

TEST_F(Seeking, OnlyTheFirstConnectedPinMovesThePositions) {
  LONGLONG time = 50;
  EXPECT_EQ(audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK) << "not connected: it does not count";
  EXPECT_EQ(Move(100, kAbsolute, 200), S_OK);
  const auto sink = CSinkFilter::Create(SinkKind::kRecording);
  ASSERT_EQ(audio->Connect(sink->Pin(), nullptr), S_OK);
  EXPECT_EQ(audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK);
  EXPECT_EQ(rig.host.Range().start, 100);
  EXPECT_EQ(time, 50);

  rig.pin->Disconnect();
  EXPECT_EQ(audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK);
  EXPECT_EQ(rig.host.Range().start, 50) << "a disconnected pin gives the right away";
  audio->Disconnect();
  sink->Pin()->Disconnect();
}

TEST_F(Seeking, PositionIsLogged) {
  TextLog log;
  EXPECT_EQ(Move(100, kAbsolute, 200), S_OK);
  EXPECT_EQ(log.CountOf("CMatroskaOutputPin::SetPositions 100\n"), 1);
  EXPECT_EQ(log.CountOf("AM_SEEKING_AbsolutePositioning 100"), 1);
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
  constexpr REFERENCE_TIME kFirstTime = std::numeric_limits<REFERENCE_TIME>::min();
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
