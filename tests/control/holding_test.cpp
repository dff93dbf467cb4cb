// Frames that are held until a segment's start is known, in whole files made for it: nothing may be lost,
// late or out of order when the pictures are not as usual.
#include <sstream>

#include "tests/support/ebml_writer.h"
#include "tests/support/graph_test.h"
#include "tests/support/log_capture.h"

namespace tarvex::test {
namespace {

/// From words such as "V0k A0 V40 A20 | V80k": track, time in milliseconds and k for a key frame; | begins a
/// Cluster that is far away in the file. Pictures last 40 ms and sound 20.
ByteString FilmOf(const std::string& text, std::uint64_t video, std::size_t frameSize) {
  const auto track = [](std::uint64_t number, bool isVideo) {
    const ByteString size = Join({Unsigned(id::kPixelWidth, 16), Unsigned(id::kPixelHeight, 16)});
    return TrackEntry(number, isVideo ? 1 : 2, isVideo ? "V_VP8" : "A_AC3",
                      Join({Unsigned(id::kDefaultDuration, isVideo ? 40000000 : 20000000),
                            isVideo ? Element(id::kVideo, size) : ByteString()}));
  };
  ByteString content =
      Join({Element(id::kInfo, {}), Element(id::kTracks, Join({track(1, video == 1), track(2, video == 2)}))});
  ByteString blocks;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (word == "|") {
      content = Join({content, Cluster(0, blocks), Element(id::kVoid, Zeros(3 << 20))});
      blocks.clear();
    } else {
      blocks = Join(
          {blocks, SimpleBlock(word[0] == 'V' ? video : 3 - video, static_cast<std::int16_t>(std::stoi(word.substr(1))),
                               Zeros(frameSize), word.back() == 'k')});
    }
  }
  return MatroskaFile(Join({content, Cluster(0, blocks)}));
}

/// What reached a sink: "@" and a segment's start, then times relative to it in milliseconds with k for a
/// key frame, p for preroll and ! for a discontinuity, then "end". What came before a flush does not count.
std::string WordsOf(SinkFilter& sink) {
  std::string words;
  for (const SinkEvent& event : sink.Events()) {
    const std::string start = std::to_string(event.start / kMillisecond);
    if (event.kind == SinkEvent::Kind::kEndFlush) words.clear();
    if (event.kind == SinkEvent::Kind::kNewSegment) words += "@" + start + ' ';
    if (event.kind == SinkEvent::Kind::kEndOfStream) words += "end ";
    if (event.kind != SinkEvent::Kind::kSample) continue;
    words += start + (event.key ? "k" : "") + (event.preroll ? "p" : "") + (event.discontinuity ? "! " : " ");
  }
  return words.substr(0, words.find_last_not_of(' ') + 1);
}

constexpr struct {
  const char* what;
  const char* film;
  LONGLONG from;  // milliseconds
  LONGLONG to;    // 0 for the end
  const char* video;
  const char* audio;
} kCases[] = {
    {"whole", "V0k A0 V40 A20 V80k A40 V120 A60", 0, 0, "@0 0k! 40 80k 120 end", "@0 0! 20 40 60 end"},
    {"from the middle", "V0k A0 V40 A20 V80k A40 V120 A60 V160k A80", 100, 0, "@80 0k! 40 80k end", "@80 0! end"},
    {"no key frame", "V0 A0 V40 A20", 0, 0, "end", "@0 0! 20 end"},
    {"no key frame and a start", "V0 A0 V40 A20 A40", 30, 0, "end", "@30 -10! 10 end"},
    {"one key frame", "V0k A0 V40 A20", 0, 0, "@0 0k! 40 end", "@0 0! 20 end"},
    {"one key frame and a start", "V0k A0 V40 A20 V80 A40", 50, 0, "@40 -40k! 0 40 end", "@40 -20! 0 end"},
    {"sound before the pictures", "A0 A20 V40k A40 V80 A60", 0, 0, "@40 0k! 40 end", "@40 0! 20 end"},
    {"all before the start", "V0k A0 V40 A20 V80k A40 A100", 200, 0, "@80 0k! end", "@80 20! end"},
    {"sound reaches the stop while held", "A0 A20 A40 A60 V0k V40 V80k", 0, 50, "@0 0k! 40 end", "@0 0! 20 end"},
    {"pictures reach the stop while held", "V0k V40 V80 A0 A20 A40", 0, 50, "@0 0k! 40 end", "@0 0! 20 end"},
    {"all sound behind the stop", "A60 V0k V40 V80k", 0, 50, "@0 0k! 40 end", "end"},
    {"no sound at all", "V0k V40 V80k", 0, 0, "@0 0k! 40 80k end", "end"},
    {"no picture at all", "A0 A20", 0, 0, "end", "@0 0! 20 end"},
    {"early pictures", "V0k V40 V80 V120k A0 A80", 85, 0, "@80 -80kp! -40 0 40k end", "@80 0! end"},
};

/// The number of the video track; the other one is sound.
class Holding : public GraphTest, public testing::WithParamInterface<std::size_t> {
 protected:
  void OpenFilm(const std::string& words, std::size_t frameSize = 8) {
    Open(SourceFilter::FromBytes(FilmOf(words, GetParam(), frameSize)));
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  }
  void PlayAndExpect(const char* video, const char* audio) {
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ASSERT_TRUE(Graph().WaitForEnd());
    Graph().Stop();
    EXPECT_EQ(WordsOf(Video()), video);
    EXPECT_EQ(WordsOf(Audio()), audio);
  }
  SinkFilter& Video() { return Graph().Sink(GetParam() - 1); }
  SinkFilter& Audio() { return Graph().Sink(2 - GetParam()); }
};

TEST_P(Holding, EveryPinGetsItsFramesInOrderAndOneEnd) {
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.what);
    OpenFilm(each.film);
    LONGLONG start = each.from * kMillisecond;
    LONGLONG stop = each.to * kMillisecond;
    EXPECT_EQ(QueryFor<IMediaSeeking>(Output(0).Get())
                  ->SetPositions(&start, AM_SEEKING_AbsolutePositioning, &stop, AM_SEEKING_AbsolutePositioning),
              S_OK);
    PlayAndExpect(each.video, each.audio);
  }
}

TEST_P(Holding, WhatWasHeldAtAStopDoesNotComeInTheNextRun) {
  const char* const film = "V0k A0 V40 A20 | V80k A40";
  OpenFilm(film);
  PlayAndExpect("@0 0k! 40 80k end", "@0 0! 20 40 end");
  for (const auto& sink : Graph().Sinks()) sink->Clear();
  m_source->Arrive(m_source->Size() - 1);  // the last read waits
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Eventually([this] { return m_source->Pin()->isWaiting.load(); }));
  Graph().Stop();
  for (const auto& sink : Graph().Sinks()) EXPECT_EQ(WordsOf(*sink), "") << "the frames were not held";
  m_source->Arrive(m_source->Size());
  PlayAndExpect("@0 0k! 40 80k end", "@0 0! 20 40 end");
}

// More sound than its ring can take is held until the second key frame comes. Where the sound is refused before the
// pictures went, they are lost, and what comes behind them cannot be decoded.
TEST_P(Holding, ARefusalEndsTheReleaseUntilTheNextKeyFrame) {
  std::string words;
  for (int time = 0; time < 1400; time += 20) words += "A" + std::to_string(time) + ' ';
  OpenFilm(words + "V0k V40 V80k V120 V160", 200000);
  LogCapture log(Splitter());
  Audio().AnswerWith([](IMediaSample* /*sample*/) { return VFW_E_SAMPLE_REJECTED; });
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_TRUE(log.WaitFor("CMatroskaSplitter::ThreadProc Process exit"));
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Audio().Samples().size(), 1U);
  const auto pictures = Video().Samples();
  EXPECT_TRUE(pictures.empty() || pictures.front().key);
}

INSTANTIATE_TEST_SUITE_P(VideoTrack, Holding, testing::Values(1, 2));

}  // namespace
}  // namespace tarvex::test
