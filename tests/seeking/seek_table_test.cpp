// Every file of the corpus that can be sought in is sought to many places, while stopped and while running. What a
// seek delivers must be the tail of what playing from the front delivers. Another corpus is taken by TARVEX_CORPUS.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "tests/corpus/manifest.h"
#include "tests/corpus/stream.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

constexpr std::int64_t kUnknownDuration = 0x7FFFFFFFFFFFFFFF;

/// A seek and what it must deliver, where no rule tells: so many of the last frames of each pin.
struct ListedSeek {
  std::int64_t segment = 0;
  std::vector<std::size_t> frames;
};
using ListedSeeks = std::map<std::int64_t, ListedSeek>;

ListedSeeks SeeksOf(const CorpusFile& file) {
  ListedSeeks seeks;
  for (const auto& seek : file.entry.value("seeks", nlohmann::json::array())) seeks[seek[0]] = {seek[1], seek[2]};
  return seeks;
}

/// A file in a graph with a pin for each kind of track, played again and again.
class Player {
 public:
  explicit Player(const CorpusFile& file) {
    EXPECT_EQ(m_graph.Open(file.path), S_OK);
    EXPECT_EQ(m_graph.ConnectSinks(SinkKind::kRecording), S_OK);
    m_seeking = QueryFor<IMediaSeeking>(m_graph.OutputPins().front().Get());
  }

  bool HasPictures() const { return NameOf(m_graph.OutputPins().front().Get()).starts_with("Video"); }

  std::vector<Stream> PlayFromTheFront() {
    EXPECT_TRUE(SUCCEEDED(m_graph.Run()));
    return ToTheEnd();
  }

  std::vector<Stream> Seek(LONGLONG place, LONGLONG stop, bool whileRunning) {
    for (const auto& sink : m_graph.Sinks()) sink->Clear();
    EXPECT_TRUE(!whileRunning || SUCCEEDED(m_graph.Run()));
    EXPECT_EQ(m_seeking->SetPositions(&place, AM_SEEKING_AbsolutePositioning, &stop, AM_SEEKING_AbsolutePositioning),
              S_OK);
    EXPECT_TRUE(whileRunning || SUCCEEDED(m_graph.Run()));
    return ToTheEnd();
  }

 private:
  std::vector<Stream> ToTheEnd() {
    for (const auto& sink : m_graph.Sinks()) EXPECT_TRUE(sink->WaitForEnd(kPatience)) << "no end of stream";
    EXPECT_TRUE(SUCCEEDED(m_graph.Stop()));  // S_FALSE: the pins had ended the worker already
    std::vector<Stream> streams;
    for (const auto& sink : m_graph.Sinks()) streams.push_back(StreamOf(*sink));
    return streams;
  }

  TestGraph m_graph;
  ComPtr<IMediaSeeking> m_seeking;
};

/// A start and a stop, and what they take of the whole, by the rules or as it is listed. Pictures are the first pin's.
class Expectation {
 public:
  Expectation(const std::vector<Stream>& whole, bool hasPictures, std::int64_t start, std::int64_t stop,
              const ListedSeek* listed)
      : m_start(start), m_stop(stop), m_origin(start) {
    for (const Stream& stream : whole) m_tails.push_back(UpToStop(stream.frames, hasPictures && m_tails.empty()));
    if (listed != nullptr) {
      m_origin = listed->segment;
      for (std::size_t pin = 0; pin < m_tails.size(); ++pin) KeepLast(m_tails[pin], listed->frames.at(pin));
      return;
    }
    if (hasPictures) BeginWithPictures(m_tails[0]);
    for (std::size_t pin = hasPictures ? 1 : 0; pin < m_tails.size(); ++pin) DropWhatLeads(m_tails[pin]);
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
  // A picture that is due counts; of anything else all of it must be.
  Frames UpToStop(const Frames& all, bool isVideo) const {
    const auto past = [&](const Frame& frame) { return (isVideo ? frame.time : frame.End()) > m_stop; };
    return {all.begin(), std::ranges::find_if(all, past)};
  }

  static void KeepLast(Frames& frames, std::size_t count) {
    frames.erase(frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(frames.size() - count));
  }

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
  const std::int64_t m_stop;
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

class SeekTable : public testing::TestWithParam<CorpusFile> {};

TEST_P(SeekTable, DeliversTheTail) {
  const CorpusFile& file = GetParam();
  {
    Player player(file);
    const std::vector<Stream> whole = player.PlayFromTheFront();
    const std::int64_t end = file.Duration();
    const Frames& frames = whole.front().frames;
    const std::int64_t middle = frames.empty() ? 0 : frames[frames.size() * 2 / 3].time;
    const ListedSeeks listed = SeeksOf(file);
    std::set<std::int64_t> places = Places(end, frames);
    std::set stops = {middle, end};
    if (!listed.empty()) {
      places.clear();
      for (const auto& [place, seek] : listed) places.insert(place);
      stops = {end};
    }
    for (const std::int64_t place : places) {
      for (const std::int64_t stop : stops) {
        SCOPED_TRACE(file.name + " from " + std::to_string(place) + " to " + std::to_string(stop));
        const Expectation expected(whole, player.HasPictures(), place,
                                   stop <= 0 || stop < place ? end : std::min(stop, end),
                                   listed.contains(place) ? &listed.at(place) : nullptr);
        for (const bool whileRunning : {false, true}) expected.Compare(player.Seek(place, stop, whileRunning));
        if (HasFailure()) return;
      }
    }
  }
  EXPECT_TRUE(ModuleBecomesIdle());
}

INSTANTIATE_TEST_SUITE_P(Corpus, SeekTable, testing::ValuesIn(Files()), kCaseName);

}  // namespace
}  // namespace tarvex::test
