// Frames that are held until a segment's start is known, in whole files made for it: nothing may be lost,
// late or out of order when the pictures are not as usual.
#include <gtest/gtest.h>

#include <sstream>

#include "framework/thread.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

constexpr std::int64_t kMillisecond = 10000;  // 100 ns units
constexpr std::int64_t kVideoFrame = 40;      // milliseconds
constexpr std::int64_t kAudioFrame = 20;

enum class First { kVideo, kAudio };

ByteString Track(std::uint64_t number, bool isVideo) {
  const ByteString size = Join({Unsigned(id::kPixelWidth, 16), Unsigned(id::kPixelHeight, 16)});
  const auto duration = static_cast<std::uint64_t>((isVideo ? kVideoFrame : kAudioFrame) * 1000000);
  return TrackEntry(number, isVideo ? 1 : 2, isVideo ? "V_VP8" : "A_AC3",
                    Join({Unsigned(id::kDefaultDuration, duration),
                          isVideo ? Element(id::kVideo, size) : Element(id::kAudio, Unsigned(id::kChannels, 2))}));
}

/// From words such as "V0k A0 V40 A20 | V80k": track, time in milliseconds and k for a key frame; | begins a
/// Cluster that is far away in the file.
ByteString Film(const std::string& words, First first) {
  constexpr std::size_t kGap = 3U << 20U;
  const std::uint64_t video = first == First::kVideo ? 1 : 2;
  ByteString content = Join({Element(id::kInfo, Unsigned(id::kTimecodeScale, 1000000)),
                             Element(id::kTracks, Join({Track(1, video == 1), Track(2, video == 2)}))});
  ByteString blocks;
  std::istringstream stream(words);
  for (std::string word; stream >> word;) {
    if (word == "|") {
      content = Join({content, Cluster(0, blocks), Element(id::kVoid, Zeros(kGap))});
      blocks.clear();
    } else {
      blocks = Join(
          {blocks, SimpleBlock(word[0] == 'V' ? video : 3 - video, static_cast<std::int16_t>(std::stoi(word.substr(1))),
                               Zeros(8), word.back() == 'k')});
    }
  }
  return MatroskaFile(Join({content, Cluster(0, blocks)}));
}

/// What reached a sink: "@" and a segment's start, then times relative to it in milliseconds with k for a
/// key frame, p for preroll and ! for a discontinuity, then "end".
std::string Words(const std::vector<SinkEvent>& events) {
  std::string words;
  for (const SinkEvent& event : events) {
    const std::string start = std::to_string(event.start / kMillisecond);
    // What came before does not count, nor what crossed with the flush.
    if (event.kind == SinkEvent::Kind::kEndFlush) words.clear();
    if (event.kind == SinkEvent::Kind::kNewSegment) words += "@" + start + ' ';
    if (event.kind == SinkEvent::Kind::kEndOfStream) words += "end ";
    if (event.kind != SinkEvent::Kind::kSample) continue;
    words += start + (event.key ? "k" : "") + (event.preroll ? "p" : "") + (event.discontinuity ? "! " : " ");
  }
  return words.substr(0, words.find_last_not_of(' ') + 1);
}

struct HoldingCase {
  const char* what;
  const char* film;
  std::int64_t from;  // milliseconds
  std::int64_t to;    // 0 for the end
  const char* video;
  const char* audio;
};

constexpr HoldingCase kCases[] = {
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

class Holding : public testing::TestWithParam<First> {
 protected:
  void SetUp() override { ASSERT_EQ(m_graph.SeparatePins(true), S_OK); }

  void Open(const char* words) {
    m_source = SourceFilter::FromBytes(Film(words, GetParam()));
    ASSERT_EQ(m_graph.Open(m_source.Get()), S_OK);
  }
  void OpenAndConnect(const char* words) {
    Open(words);
    ASSERT_EQ(m_graph.ConnectSinks(SinkKind::kCounting), S_OK);
  }
  ComPtr<IPin> VideoPin() const { return m_graph.OutputPins().at(GetParam() == First::kVideo ? 0 : 1); }
  ComPtr<IPin> AudioPin() const { return m_graph.OutputPins().at(GetParam() == First::kVideo ? 1 : 0); }
  SinkFilter& Video() const { return m_graph.Sink(GetParam() == First::kVideo ? 0 : 1); }
  SinkFilter& Audio() const { return m_graph.Sink(GetParam() == First::kVideo ? 1 : 0); }

  static void Seek(IPin* pin, std::int64_t from, std::int64_t to) {
    LONGLONG start = from * kMillisecond;
    LONGLONG stop = to * kMillisecond;
    EXPECT_EQ(QueryFor<IMediaSeeking>(pin)->SetPositions(&start, AM_SEEKING_AbsolutePositioning, &stop,
                                                         AM_SEEKING_AbsolutePositioning),
              S_OK);
  }
  void Play() {
    ASSERT_TRUE(SUCCEEDED(m_graph.Run()));
    ASSERT_TRUE(m_graph.WaitForEnd());
  }

  ComPtr<SourceFilter> m_source;
  TestGraph m_graph;
};

TEST_P(Holding, EveryPinGetsItsFramesInOrderAndOneEnd) {
  for (const HoldingCase& each : kCases) {
    SCOPED_TRACE(each.what);
    TestGraph fresh;
    ASSERT_EQ(fresh.SeparatePins(true), S_OK);
    m_source = SourceFilter::FromBytes(Film(each.film, GetParam()));
    ASSERT_EQ(fresh.Open(m_source.Get()), S_OK);
    ASSERT_EQ(fresh.ConnectSinks(SinkKind::kCounting), S_OK);
    Seek(fresh.OutputPins().front().Get(), each.from, each.to);
    ASSERT_TRUE(SUCCEEDED(fresh.Run()));
    ASSERT_TRUE(fresh.WaitForEnd());
    fresh.Stop();
    const std::size_t video = GetParam() == First::kVideo ? 0 : 1;
    EXPECT_EQ(Words(fresh.Sink(video).Events()), each.video);
    EXPECT_EQ(Words(fresh.Sink(1 - video).Events()), each.audio);
  }
}

TEST_P(Holding, AnUnconnectedVideoPinHoldsNobody) {
  Open("V0k A0 V40 A20 A40");
  ASSERT_EQ(m_graph.ConnectSink(AudioPin().Get(), SinkKind::kCounting), S_OK);
  Play();
  m_graph.Stop();
  EXPECT_EQ(Words(m_graph.Sink(0).Events()), "@0 0! 20 40 end");
}

TEST_P(Holding, WhatWasHeldAtAStopDoesNotComeInTheNextRun) {
  OpenAndConnect("V0k A0 V40 A20 | V80k A40");
  const int opened = m_source->Reads();
  Play();
  m_graph.Stop();
  m_source->BlockFrom(m_source->Reads() - opened - 1);
  ASSERT_TRUE(SUCCEEDED(m_graph.Run()));
  for (const auto& sink : m_graph.Sinks()) sink->Clear();
  ASSERT_TRUE(m_source->WaitUntilBlocked(kPatience));
  m_graph.Stop();
  for (const auto& sink : m_graph.Sinks()) EXPECT_EQ(Words(sink->Events()), "") << "the frames were not held";
  m_source->BlockFrom(0x1000000);
  Play();
  m_graph.Stop();
  EXPECT_EQ(Words(Video().Events()), "@0 0k! 40 80k end");
  EXPECT_EQ(Words(Audio().Events()), "@0 0! 20 40 end");
}

TEST_P(Holding, ASeekFromASinkStartsAnew) {
  OpenAndConnect("V0k A0 V40 A20 V80k A40 V120 A60 V160k A80");
  const ComPtr<IPin> pin = VideoPin();
  int samples = 0;
  Video().OnSample([&](IMediaSample* /*sample*/) {
    if (++samples == 2) Seek(pin.Get(), 100, 0);
  });
  ASSERT_TRUE(SUCCEEDED(m_graph.Run()));
  ASSERT_TRUE(Video().WaitForEnd(kPatience));
  ASSERT_TRUE(Audio().WaitForEnd(kPatience));
  m_graph.Stop();
  Video().OnSample(nullptr);
  EXPECT_EQ(Words(Video().Events()), "@80 0k! 40 80k end");
  EXPECT_EQ(Words(Audio().Events()), "@80 0! end");
}

INSTANTIATE_TEST_SUITE_P(TrackOrder, Holding, testing::Values(First::kVideo, First::kAudio), [](const auto& order) {
  return std::string(order.param == First::kVideo ? "VideoFirst" : "AudioFirst");
});

}  // namespace
}  // namespace tarvex::test
