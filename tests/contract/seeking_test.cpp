// IMediaSeeking of the output pins: capabilities, time formats, and every operation on positions. And what
// IAMExtendedSeeking offers; the corpus tests compare the markers.
#include <limits>

#include "framework/bstr.h"
#include "tests/contract/contract_fixture.h"
#include "tests/support/log_capture.h"

namespace tarvex::test {
namespace {

constexpr DWORD kNone = AM_SEEKING_NoPositioning;
constexpr DWORD kAbsolute = AM_SEEKING_AbsolutePositioning;
constexpr DWORD kRelative = AM_SEEKING_RelativePositioning;
constexpr DWORD kIncremental = AM_SEEKING_IncrementalPositioning;
constexpr LONGLONG kDuration = 1000000000;

/// A connected video pin and an unconnected audio pin of one filter.
class Seeking : public GraphTest {
 protected:
  void SetUp() override { OpenLasting(kDuration / kMillisecond); }
  void OpenLasting(LONGLONG milliseconds) {
    OpenMovie({.duration = static_cast<std::uint32_t>(milliseconds)});
    ASSERT_EQ(Graph().ConnectSink(Output(0).Get(), SinkKind::kCounting), S_OK);
    m_video = QueryFor<IMediaSeeking>(Output(0).Get());
    m_audio = QueryFor<IMediaSeeking>(Output(1).Get());
  }
  void TearDown() override {
    m_video.Reset();
    m_audio.Reset();
    GraphTest::TearDown();
  }

  void SetRange(LONGLONG start, LONGLONG stop) {
    ASSERT_EQ(m_video->SetPositions(&start, kAbsolute, &stop, kAbsolute), S_OK);
  }
  void ExpectRange(LONGLONG start, LONGLONG stop) {
    LONGLONG current = -1;
    LONGLONG end = -1;
    EXPECT_EQ(m_video->GetPositions(&current, &end), S_OK);
    EXPECT_EQ(current, start);
    EXPECT_EQ(end, stop);
  }

  ComPtr<IMediaSeeking> m_video;
  ComPtr<IMediaSeeking> m_audio;
};

TEST_F(Seeking, CapabilitiesFormatsAndConversions) {
  DWORD bits = 0;
  EXPECT_EQ(m_video->GetCapabilities(&bits), S_OK);
  EXPECT_EQ(bits, 0x37U);
  EXPECT_EQ(m_video->CheckCapabilities(&bits), S_OK);
  bits = AM_SEEKING_CanGetCurrentPos | AM_SEEKING_CanGetDuration;
  EXPECT_EQ(m_video->CheckCapabilities(&bits), S_FALSE);

  EXPECT_EQ(m_video->IsFormatSupported(&TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(m_video->IsFormatSupported(&TIME_FORMAT_SAMPLE), S_FALSE);
  EXPECT_EQ(m_audio->SetTimeFormat(&TIME_FORMAT_FRAME), E_FAIL) << "only pictures are counted";
  EXPECT_EQ(m_video->IsUsingTimeFormat(&TIME_FORMAT_MEDIA_TIME), S_OK);

  LONGLONG target = -1;
  EXPECT_EQ(m_video->ConvertTimeFormat(&target, &TIME_FORMAT_FRAME, 4000000, nullptr), S_OK);
  EXPECT_EQ(target, 10);
  EXPECT_EQ(m_video->ConvertTimeFormat(&target, nullptr, 10, &TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(target, 0) << "both ways divide";
  EXPECT_EQ(m_video->ConvertTimeFormat(&target, &TIME_FORMAT_SAMPLE, 7, &TIME_FORMAT_SAMPLE), S_OK);
  EXPECT_EQ(target, 7);
  EXPECT_EQ(m_video->ConvertTimeFormat(&target, &TIME_FORMAT_SAMPLE, 8, nullptr), E_INVALIDARG);
  EXPECT_EQ(target, 7);

  SetRange(4000000, kDuration);
  EXPECT_EQ(m_video->SetTimeFormat(&TIME_FORMAT_FRAME), S_OK);
  EXPECT_EQ(m_audio->IsUsingTimeFormat(&TIME_FORMAT_FRAME), S_OK) << "one format for all pins";
  ExpectRange(10, 2500);
  EXPECT_EQ(m_video->GetStopPosition(&target), S_OK);
  EXPECT_EQ(target, 2500);
  EXPECT_EQ(m_video->GetDuration(&target), S_OK);
  EXPECT_EQ(target, 2500);
  EXPECT_EQ(m_video->GetAvailable(nullptr, &target), S_OK);
  EXPECT_EQ(target, kDuration) << "not converted";
}

TEST_F(Seeking, EveryOperationOnPositions) {
  const struct {
    const char* what;
    bool frames;
    LONGLONG current, stop;
    DWORD currentMode, stopMode;
    LONGLONG newStart, newStop;      // from 100 to 600
    LONGLONG currentBack, stopBack;  // what the caller's values become
  } cases[] = {
      {"the mode of the current position counts for both", false, 200, 900, kAbsolute, kNone, 200, 900, 200, 900},
      {"relative", false, 50, 7, kRelative, kRelative, 150, 607, 50, 7},
      {"incremental", false, 50, 7, kIncremental, kIncremental, 150, 607, 50, 7},
      {"none sets what is there", false, 200, 900, kNone, kNone, 100, 600, 200, 900},
      {"beyond the duration", false, kDuration + 1, kDuration + 2, kAbsolute | AM_SEEKING_SeekToKeyFrame, kAbsolute,
       kDuration, kDuration, kDuration, kDuration},
      {"frames: the start comes back converted", true, 800000, 4000000, kAbsolute, kAbsolute, 2, 10, 2, 4000000},
  };
  EXPECT_EQ(m_video->SetRate(2.5), S_OK);
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    SetRange(100, 600);
    EXPECT_EQ(m_video->SetTimeFormat(each.frames ? &TIME_FORMAT_FRAME : &TIME_FORMAT_MEDIA_TIME), S_OK);
    LONGLONG current = each.current;
    LONGLONG stop = each.stop;
    EXPECT_EQ(m_video->SetPositions(&current, each.currentMode, &stop, each.stopMode), S_OK);
    EXPECT_EQ(m_video->SetTimeFormat(&TIME_FORMAT_MEDIA_TIME), S_OK);
    ExpectRange(each.newStart, each.newStop);
    EXPECT_EQ(current, each.currentBack);
    EXPECT_EQ(stop, each.stopBack);
  }
  double rate = 0;
  EXPECT_EQ(m_video->GetRate(&rate), S_OK);
  EXPECT_EQ(rate, 2.5);

  // Applications give a null stop with AM_SEEKING_NoPositioning. What is null stays as it is.
  LogCapture log(Splitter());
  SetRange(5, 600);
  LONGLONG time = 100;
  EXPECT_EQ(m_video->SetPositions(&time, kAbsolute, nullptr, kNone), S_OK);
  ExpectRange(100, 600);
  EXPECT_EQ(log.CountOf("CMatroskaOutputPin::SetPositions 100\n"), 1U);
  EXPECT_EQ(m_video->SetPositions(nullptr, kRelative, &time, kRelative), S_OK);
  ExpectRange(100, 700);

  OpenLasting(0);
  for (LONGLONG edge : {std::numeric_limits<LONGLONG>::min(), std::numeric_limits<LONGLONG>::max()}) {
    SetRange(edge, edge);
    EXPECT_EQ(m_video->SetPositions(&edge, kRelative, nullptr, kNone), S_OK);
    ExpectRange(edge, edge);
  }
}

TEST_F(Seeking, OnlyTheFirstConnectedPinMovesThePositions) {
  LONGLONG time = 50;
  EXPECT_EQ(m_audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK) << "not connected: it does not count";
  SetRange(100, 100);
  ASSERT_EQ(Graph().ConnectSink(Output(1).Get(), SinkKind::kCounting), S_OK);
  EXPECT_EQ(m_audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK);
  ExpectRange(100, 100);
  EXPECT_EQ(time, 50);
  EXPECT_EQ(Output(0)->Disconnect(), S_OK);
  EXPECT_EQ(m_audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK);
  ExpectRange(50, 50);
}

TEST_F(Seeking, StepsFromTwoThreadsAllCountAndNothingStartsBeforeTheGraphRuns) {
  constexpr int kSteps = 2000;
  LogCapture log(Splitter());
  SetRange(0, 20000000);
  const auto step = [&] {
    for (int k = 0; k < kSteps; ++k) {
      LONGLONG distance = 1;
      m_video->SetPositions(&distance, kRelative, nullptr, kNone);
    }
  };
  Thread other;
  ASSERT_EQ(other.Start(step), S_OK);
  step();
  other.Join();
  ExpectRange(2 * kSteps, 20000000);
  EXPECT_EQ(m_video->SetRate(2.0), S_OK);
  EXPECT_FALSE(log.Contains("BeginFlush"));
  EXPECT_FALSE(log.Contains("CMatroskaSplitter::ThreadProc tm_start"));
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().WaitForEnd());
  const SinkEvent segment = Graph().Sink(0).Events().front();
  EXPECT_EQ(segment.stop, 20000000);
  EXPECT_EQ(segment.rate, 2.0);
}

using Markers = GraphTest;

TEST_F(Markers, CapabilitiesFollowFromVideoAndChaptersAndOtherNumbersAreNone) {
  for (const auto& [file, expected] : {std::pair{"aac.mka", 49}, {"multi.mkv", 65}, {"chapters_edges.mkv", 69}}) {
    Graph().CloseSource();
    ASSERT_EQ(Graph().Open(CorpusFile(file)), S_OK);
    LONG capabilities = 0;
    EXPECT_EQ(Ask<IAMExtendedSeeking>()->get_ExSeekCapabilities(&capabilities), S_OK);
    EXPECT_EQ(capabilities, expected) << file;
  }
  for (const LONG number : {0, 6, -1, 0x7FFFFFFF}) {
    double time = -7;
    BStr name;
    EXPECT_EQ(Ask<IAMExtendedSeeking>()->GetMarkerTime(number, &time), S_OK);
    EXPECT_EQ(Ask<IAMExtendedSeeking>()->GetMarkerName(number, name.Put()), S_OK);
    EXPECT_EQ(time, -7);
    EXPECT_EQ(name.Get(), nullptr);
  }
}

}  // namespace
}  // namespace tarvex::test
