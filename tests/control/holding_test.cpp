// Frames that are held until a segment's start is known, in whole files made for it: nothing may be lost,
// late or out of order when the pictures are not as usual.
#include <fstream>
#include <sstream>

#include "tests/support/ebml_writer.h"
#include "tests/support/graph_test.h"
#include "tests/support/log_capture.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

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

/// The number of the video track; the other one is sound.
class Holding : public GraphTest, public testing::WithParamInterface<std::size_t> {
 protected:
  void OpenFilm(const std::string& words, std::size_t frameSize = 8) {
    Open(SourceFilter::FromBytes(FilmOf(words, GetParam(), frameSize)));
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  }
  void PlayAndExpect(const std::string& video, const std::string& audio) {
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
  std::ifstream table(SystemPath(SourceDir() + "/tests/data/held_frames.txt"));
  int rows = 0;
  for (std::string line; std::getline(table, line);) {
    if (line.starts_with('#')) continue;
    SCOPED_TRACE(line);
    std::vector<std::string> row;
    for (std::size_t end = line.find(" | "); end != std::string::npos; end = line.find(" | ")) {
      row.push_back(line.substr(0, end));
      line.erase(0, end + 3);
    }
    row.push_back(line);
    OpenFilm(row.at(1));
    LONGLONG start = std::stoi(row.at(2)) * kMillisecond;
    LONGLONG stop = std::stoi(row.at(3)) * kMillisecond;
    EXPECT_EQ(QueryFor<IMediaSeeking>(Output(0).Get())
                  ->SetPositions(&start, AM_SEEKING_AbsolutePositioning, &stop, AM_SEEKING_AbsolutePositioning),
              S_OK);
    PlayAndExpect(row.at(4), row.at(5));
    ++rows;
  }
  EXPECT_GE(rows, 14);
}

TEST_P(Holding, WhatWasHeldAtAStopOrAFailedReadNeverComes) {
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
  for (const auto& sink : Graph().Sinks()) sink->Clear();
  m_source->Pin()->brokenFrom = m_source->Size() - 1;  // the last read fails
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Eventually([this] { return m_source->Pin()->brokenReads != 0; }));  // the pass may be over, or not
  EXPECT_EQ(Graph().InputPin()->EndOfStream(), S_OK);
  for (const auto& sink : Graph().Sinks()) EXPECT_TRUE(Eventually([&] { return WordsOf(*sink) == "end"; }));
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
