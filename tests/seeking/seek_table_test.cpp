// Every file of the corpus that can be sought in is sought to many places, while stopped and while running. What a
// seek delivers must be the tail of what playing from the front delivers. Another corpus is taken by TARVEX_CORPUS.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "tests/corpus/manifest.h"
#include "tests/corpus/stream.h"
#include "tests/support/graph_test.h"

namespace tarvex::test {
namespace {

using nlohmann::json;

constexpr std::int64_t kUnknownDuration = 0x7FFFFFFFFFFFFFFF;

/// A start and a stop, and what they take of the whole, by the rules; or so many of the last frames of each pin, where
/// no rule tells and it is listed. Pictures are the first pin's.
class Expectation {
 public:
  Expectation(const std::vector<Stream>& whole, bool hasPictures, std::int64_t start, std::int64_t stop,
              const json& listed)
      : m_start(start), m_origin(listed.is_null() ? start : listed[1].get<std::int64_t>()) {
    for (const Stream& stream : whole) {
      const std::size_t pin = m_tails.size();
      const bool isVideo = hasPictures && pin == 0;
      // A picture that is due counts; of anything else all of it must be.
      const auto past = [&](const Frame& frame) { return (isVideo ? frame.time : frame.End()) > stop; };
      const auto end = std::ranges::find_if(stream.frames, past);
      Frames& frames = m_tails.emplace_back(stream.frames.begin(), end);
      if (!listed.is_null()) {
        frames.erase(frames.begin(), frames.end() - listed[2].at(pin).get<std::ptrdiff_t>());
      } else if (isVideo) {
        BeginWithPictures(frames);
      } else {
        DropWhatLeads(frames);
      }
    }
  }

  void Compare(const std::vector<Stream>& streams) const {
    for (std::size_t pin = 0; pin < streams.size(); ++pin) {
      const std::size_t count = m_tails[pin].size();
      const Stream& stream = streams[pin];
      EXPECT_TRUE(stream.frames == m_tails[pin]) << "pin " << pin << ": " << stream.frames.size() << " frames from "
                                                 << (stream.frames.empty() ? -1 : stream.frames[0].time) << ", not "
                                                 << count << " from " << (count ? m_tails[pin][0].time : -1);
      EXPECT_EQ(stream.order, OrderOf(count)) << "pin " << pin;
      EXPECT_TRUE(count == 0 || stream.origin == m_origin) << "pin " << pin << " starts at " << stream.origin;
    }
  }

 private:
  // From the last key frame that is not after the start; the segment starts with the last picture that is not.
  void BeginWithPictures(Frames& pictures) {
    const auto isKey = [&](const Frame& frame) { return frame.key && frame.time <= m_start; };
    const auto key = std::find_if(pictures.rbegin(), pictures.rend(), isKey);
    if (key != pictures.rend()) pictures.erase(pictures.begin(), key.base() - 1);
    if (pictures.empty()) return;
    m_first = pictures.front().time;
    m_origin = StartAmong(pictures);
  }

  // Known when a second key frame and a picture beyond the start have come.
  std::int64_t StartAmong(const Frames& pictures) const {
    std::int64_t latest = -kUnknownDuration;
    std::int64_t beyond = kUnknownDuration;
    std::size_t keys = 0;
    for (const Frame& frame : pictures) {
      keys += frame.key ? 1 : 0;
      (frame.time <= m_start ? latest : beyond) =
          frame.time <= m_start ? std::max(latest, frame.time) : std::min(beyond, frame.time);
      if (keys >= 2 && (beyond != kUnknownDuration || m_start == 0)) break;
    }
    return latest != -kUnknownDuration ? latest : beyond;
  }

  // What comes before the first picture is of no use as long as it leads, and never what is over at the start.
  void DropWhatLeads(Frames& frames) const {
    const auto useful = [&](const Frame& frame) { return frame.time >= m_first; };
    frames.erase(frames.begin(), std::ranges::find_if(frames, useful));
    std::erase_if(frames, [&](const Frame& frame) { return frame.time < m_origin && frame.End() < m_origin; });
  }

  const std::int64_t m_start;
  std::int64_t m_origin;
  std::int64_t m_first = -kUnknownDuration;
  std::vector<Frames> m_tails;  // what comes of each pin
};

std::vector<CorpusFile> Files() {
  std::vector<CorpusFile> files = Corpus();
  std::erase_if(files, [](const CorpusFile& file) {
    return !file.Opens() || file.IsRobustness() || !file.entry.contains("tracks") || file.entry["tracks"].empty();
  });
  return files;
}

// Ends, middles, and a few key frames with their neighbours.
std::set<std::int64_t> Places(std::int64_t duration, const Frames& frames) {
  constexpr std::size_t kKeyFrames = 6;
  std::vector<std::int64_t> keys;
  for (const Frame& frame : frames) {
    if (frame.key) keys.push_back(frame.time);
  }
  if (keys.empty()) keys.push_back(0);
  const std::int64_t last = duration != kUnknownDuration ? duration : keys.back();
  std::set<std::int64_t> places = {0, last / 10, last / 2, last / 10 * 9, last};
  for (std::size_t k = 0; k < kKeyFrames; ++k) {
    const std::int64_t time =
        keys[k == 1 ? std::min<std::size_t>(1, keys.size() - 1) : k * (keys.size() - 1) / (kKeyFrames - 1)];
    places.insert({time - 1, time, time + 1});
  }
  std::erase_if(places, [&](std::int64_t place) { return place < 0 || place > last; });
  return places;
}

class SeekTable : public GraphTest, public testing::WithParamInterface<CorpusFile> {
 protected:
  std::vector<Stream> PlayFrom(LONGLONG place, LONGLONG stop, bool whileRunning) {
    for (const auto& sink : Graph().Sinks()) sink->Clear();
    EXPECT_TRUE(!whileRunning || SUCCEEDED(Graph().Run()));
    EXPECT_EQ(QueryFor<IMediaSeeking>(Output(0).Get())
                  ->SetPositions(&place, AM_SEEKING_AbsolutePositioning, &stop, AM_SEEKING_AbsolutePositioning),
              S_OK);
    return ToTheEnd();
  }
  std::vector<Stream> ToTheEnd() {
    EXPECT_TRUE(SUCCEEDED(Graph().Run()));
    EXPECT_TRUE(Graph().WaitForEnd());
    EXPECT_TRUE(SUCCEEDED(Graph().Stop()));  // S_FALSE: the pins had ended the worker already
    std::vector<Stream> streams;
    for (const auto& sink : Graph().Sinks()) streams.push_back(StreamOf(*sink));
    return streams;
  }
};

TEST_P(SeekTable, DeliversTheTail) {
  const CorpusFile& file = GetParam();
  ASSERT_EQ(Graph().Open(file.path), S_OK);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kRecording), S_OK);
  const std::vector<Stream> whole = ToTheEnd();
  const std::int64_t end = file.Duration();
  const Frames& frames = whole.front().frames;
  std::set stops = {end, frames.empty() ? 0 : frames[frames.size() * 2 / 3].time};
  std::map<std::int64_t, json> places;  // and what is listed of them
  for (const json& seek : file.entry.value("seeks", json::array())) places[seek[0]] = seek;
  if (places.empty()) {
    for (const std::int64_t place : Places(end, frames)) places[place] = nullptr;
  } else {
    stops = {end};
  }
  const bool hasPictures = NameOf(Output(0).Get()).starts_with("Video");
  for (const auto& [place, listed] : places) {
    for (const std::int64_t stop : stops) {
      SCOPED_TRACE(file.name + " from " + std::to_string(place) + " to " + std::to_string(stop));
      const std::int64_t last = stop <= 0 || stop < place ? end : std::min(stop, end);
      const Expectation expected(whole, hasPictures, place, last, listed);
      for (const bool whileRunning : {false, true}) expected.Compare(PlayFrom(place, stop, whileRunning));
      if (HasFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, SeekTable, testing::ValuesIn(Files()), kCaseName);

}  // namespace
}  // namespace tarvex::test
