// IMediaSeeking of the output pins: capabilities, time formats, and every operation on positions. What
// IAMExtendedSeeking offers, the corpus tests and mkvhost's transcripts compare.
#include <limits>

#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

constexpr DWORD kNone = AM_SEEKING_NoPositioning;
constexpr DWORD kAbsolute = AM_SEEKING_AbsolutePositioning;
constexpr DWORD kRelative = AM_SEEKING_RelativePositioning;
constexpr DWORD kIncremental = AM_SEEKING_IncrementalPositioning;
constexpr LONGLONG kDuration = 1000000000;

using Range = std::pair<LONGLONG, LONGLONG>;

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
  /// The mode of the current position counts for both.
  HRESULT Set(Range& range, DWORD mode) { return m_video->SetPositions(&range.first, mode, &range.second, kNone); }
  void SetRange(LONGLONG start, LONGLONG stop) {
    Range range(start, stop);
    ASSERT_EQ(Set(range, kAbsolute), S_OK);
  }
  Range Positions() {
    Range range;
    EXPECT_EQ(m_video->GetPositions(&range.first, &range.second), S_OK);
    return range;
  }
  void Use(const GUID& format) { EXPECT_EQ(m_video->SetTimeFormat(&format), S_OK); }

  ComPtr<IMediaSeeking> m_video;
  ComPtr<IMediaSeeking> m_audio;
};

TEST_F(Seeking, CapabilitiesFormatsAndConversions) {
  DWORD bits = 0;
  EXPECT_EQ(m_video->GetCapabilities(&bits), S_OK);
  EXPECT_EQ(bits, 0x37U);
  EXPECT_EQ(m_video->CheckCapabilities(&bits), S_OK);
  bits |= AM_SEEKING_CanGetCurrentPos;
  EXPECT_EQ(m_video->CheckCapabilities(&bits), S_FALSE);
  EXPECT_EQ(m_video->IsFormatSupported(&TIME_FORMAT_SAMPLE), S_FALSE);
  EXPECT_EQ(m_audio->SetTimeFormat(&TIME_FORMAT_FRAME), E_FAIL) << "only pictures are counted";
  LONGLONG target = -1;
  EXPECT_EQ(m_video->ConvertTimeFormat(&target, &TIME_FORMAT_FRAME, 4000000, nullptr), S_OK);
  EXPECT_EQ(target, 10);
  EXPECT_EQ(m_video->ConvertTimeFormat(&target, &TIME_FORMAT_SAMPLE, 7, &TIME_FORMAT_SAMPLE), S_OK);
  EXPECT_EQ(m_video->ConvertTimeFormat(&target, &TIME_FORMAT_SAMPLE, 8, nullptr), E_INVALIDARG);
  EXPECT_EQ(target, 7);

  SetRange(4000000, kDuration);
  Use(TIME_FORMAT_FRAME);
  EXPECT_EQ(m_audio->IsUsingTimeFormat(&TIME_FORMAT_FRAME), S_OK) << "one format for all pins";
  EXPECT_EQ(Positions(), Range(10, 2500));
  EXPECT_EQ(m_video->GetDuration(&target), S_OK);
  EXPECT_EQ(target, 2500);
  EXPECT_EQ(m_video->GetStopPosition(&target), S_OK);
  EXPECT_EQ(target, 2500);
  EXPECT_EQ(m_video->GetAvailable(nullptr, &target), S_OK);
  EXPECT_EQ(target, kDuration) << "not converted";
  Range callers(800000, 4000000);
  EXPECT_EQ(Set(callers, kAbsolute), S_OK);
  EXPECT_EQ(callers, Range(2, 4000000)) << "the start comes back converted";
  Use(TIME_FORMAT_MEDIA_TIME);
  EXPECT_EQ(Positions(), Range(2, 10)) << "both ways divide";

  Use(TIME_FORMAT_FRAME);
  ASSERT_EQ(Graph().CloseSource(), S_OK);
  ASSERT_EQ(Graph().Open(CorpusFile("aac.mka")), S_OK);
  const auto sound = QueryFor<IMediaSeeking>(Output(0).Get());
  EXPECT_EQ(sound->IsUsingTimeFormat(&TIME_FORMAT_MEDIA_TIME), S_OK);
  EXPECT_EQ(sound->ConvertTimeFormat(&target, &TIME_FORMAT_FRAME, 4000000, nullptr), S_OK);
  EXPECT_EQ(target, 0) << "nothing says how long one of its frames is";
}

TEST_F(Seeking, EveryOperationOnPositions) {
  const struct {
    const char* what;
    DWORD mode;
    Range given, after;  // from 100 to 600
  } cases[] = {
      {"absolute", kAbsolute, {200, 900}, {200, 900}},
      {"relative", kRelative, {50, 7}, {150, 607}},
      {"incremental", kIncremental, {50, 7}, {150, 607}},
      {"none sets what is there", kNone, {200, 900}, {100, 600}},
      {"at the duration", kAbsolute | AM_SEEKING_SeekToKeyFrame, {kDuration, kDuration}, {kDuration, kDuration}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    SetRange(100, 600);
    Range callers = each.given;
    EXPECT_EQ(Set(callers, each.mode), S_OK);
    EXPECT_EQ(Positions(), each.after);
    EXPECT_EQ(callers, each.given);
  }
  Range callers(kDuration + 1, kDuration + 2);
  EXPECT_EQ(Set(callers, kAbsolute), S_OK);
  EXPECT_EQ(Positions(), Range(kDuration, kDuration));
  EXPECT_EQ(callers, Range(kDuration, kDuration));

  // Applications give a null stop with AM_SEEKING_NoPositioning. What is null stays as it is.
  SetRange(5, 600);
  LONGLONG time = 100;
  EXPECT_EQ(m_video->SetPositions(&time, kAbsolute, nullptr, kNone), S_OK);
  EXPECT_EQ(m_video->SetPositions(nullptr, kRelative, &time, kRelative), S_OK);
  EXPECT_EQ(Positions(), Range(100, 700));
  OpenLasting(0);
  for (LONGLONG edge : {std::numeric_limits<LONGLONG>::min(), std::numeric_limits<LONGLONG>::max()}) {
    SetRange(edge, edge);
    EXPECT_EQ(m_video->SetPositions(&edge, kRelative, nullptr, kNone), S_OK);
    EXPECT_EQ(Positions(), Range(edge, edge));
  }
}

TEST_F(Seeking, OnlyTheFirstConnectedPinMovesThePositions) {
  LONGLONG time = 50;
  EXPECT_EQ(m_audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK) << "not connected: it does not count";
  SetRange(100, 100);
  ASSERT_EQ(Graph().ConnectSink(Output(1).Get(), SinkKind::kCounting), S_OK);
  EXPECT_EQ(m_audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK);
  EXPECT_EQ(Positions(), Range(100, 100));
  EXPECT_EQ(Output(0)->Disconnect(), S_OK);
  EXPECT_EQ(m_audio->SetPositions(&time, kAbsolute, &time, kAbsolute), S_OK);
  EXPECT_EQ(Positions(), Range(50, 50));
  ASSERT_EQ(Graph().ConnectSink(Output(0).Get(), SinkKind::kCounting), S_OK);
  EXPECT_TRUE(SUCCEEDED(Splitter()->Stop()));
  SetRange(100, 100);
  EXPECT_EQ(Positions(), Range(100, 100)) << "a stop makes it anybody's turn";
}

}  // namespace
}  // namespace tarvex::test
