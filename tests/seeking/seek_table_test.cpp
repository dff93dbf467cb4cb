// Every file of the corpus that can be sought in is sought to many places, while stopped and while running. What a
// seek delivers must be the tail of what playing from the front delivers. Another corpus is taken by TARVEX_CORPUS.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "filter/interface_ids.h"
#include "framework/thread.h"
#include "tests/corpus/manifest.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

constexpr std::int64_t kUnknownDuration = 0x7FFFFFFFFFFFFFFF;

using Frames = std::vector<ManifestFrame>;

std::int64_t End(const ManifestFrame& frame) { return frame.time + frame.duration; }

/// What one pin delivered, with times of the file.
struct Stream {
  Frames frames;
  std::int64_t origin = 0;  ///< the segment's start; that of the seek when nothing came
  std::string order;        ///< n a segment, s a sample, e the end, + a discontinuity, - preroll
};

/// A file in a graph with a pin for each kind of track, played again and again.
class Player {
 public:
  explicit Player(const ManifestFile& file) {
    EXPECT_EQ(m_graph.Open(file.path), S_OK);
    EXPECT_EQ(m_graph.ConnectSinks(SinkKind::kRecording), S_OK);
    m_seeking = QueryFor<IMediaSeeking>(m_graph.OutputPins().front().Get());
  }

  bool IsVideo(std::size_t pin) const { return NameOf(m_graph.OutputPins()[pin].Get()).starts_with("Video"); }

  std::vector<Stream> PlayFromTheFront() {
    EXPECT_TRUE(SUCCEEDED(m_graph.Run()));
    return ToTheEnd();
  }

  std::vector<Stream> Seek(std::int64_t place, std::int64_t stop, bool whileRunning) {
    for (const auto& sink : m_graph.Sinks()) sink->Clear();
    LONGLONG start = place;
    LONGLONG end = stop;
    EXPECT_TRUE(!whileRunning || SUCCEEDED(m_graph.Run()));
    EXPECT_EQ(m_seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, &end, AM_SEEKING_AbsolutePositioning),
              S_OK);
    EXPECT_TRUE(whileRunning || SUCCEEDED(m_graph.Run()));
    return ToTheEnd();
  }

 private:
  std::vector<Stream> ToTheEnd() {
    for (const auto& sink : m_graph.Sinks()) EXPECT_TRUE(sink->WaitForEnd(kPatience)) << "no end of stream";
    EXPECT_TRUE(SUCCEEDED(m_graph.Stop()));  // S_FALSE: the pins had ended the worker already
    std::vector<Stream> streams;
    for (const auto& sink : m_graph.Sinks()) streams.push_back(StreamOf(sink->Events()));
    return streams;
  }

  static Stream StreamOf(std::vector<SinkEvent> events) {
    const auto flush = std::find_if(events.rbegin(), events.rend(),
                                    [](const auto& event) { return event.kind == SinkEvent::Kind::kEndFlush; });
    events.erase(events.begin(), flush.base());
    Stream stream;
    for (const SinkEvent& event : events) {
      if (event.kind == SinkEvent::Kind::kNewSegment) stream.origin = event.start;
      stream.order += event.kind == SinkEvent::Kind::kNewSegment ? 'n'
                      : event.kind == SinkEvent::Kind::kSample   ? 's'
                                                                 : 'e';
      if (event.kind != SinkEvent::Kind::kSample) continue;
      if (event.discontinuity) stream.order += '+';
      if (event.preroll != (event.start < 0 && event.stop < 0)) stream.order += "wrong preroll";
      stream.frames.push_back(
          {event.start + stream.origin, event.stop - event.start, event.key, event.size, event.sha1});
    }
    return stream;
  }

  TestGraph m_graph;
  ComPtr<IMediaSeeking> m_seeking;
};

/// A start and a stop, and what they take of the whole.
class Expectation {
 public:
  Expectation(const Player& player, const std::vector<Stream>& whole, std::int64_t start, std::int64_t stop)
      : m_start(start), m_stop(stop), m_origin(start) {
    for (std::size_t pin = 0; pin < whole.size(); ++pin)
      m_upToStop.push_back(UpToStop(whole[pin].frames, player.IsVideo(pin)));
    m_tails = m_upToStop;
    for (std::size_t pin = 0; pin < whole.size(); ++pin) {
      if (player.IsVideo(pin)) BeginWithPictures(pin);
    }
    for (std::size_t pin = 0; pin < whole.size(); ++pin) {
      if (!player.IsVideo(pin)) DropWhatLeads(m_tails[pin]);
    }
  }

  /// As it is listed.
  void Replace(const ManifestSeek& seek) {
    m_origin = seek.segment;
    for (std::size_t pin = 0; pin < m_tails.size(); ++pin) {
      Frames& all = m_tails[pin] = m_upToStop[pin];
      ASSERT_LE(seek.frames.at(pin), all.size());
      all.erase(all.begin(), all.end() - static_cast<std::ptrdiff_t>(seek.frames[pin]));
    }
  }

  void Compare(const std::vector<Stream>& streams) const {
    for (std::size_t pin = 0; pin < streams.size(); ++pin) {
      const std::size_t count = m_tails[pin].size();
      const Stream& stream = streams[pin];
      EXPECT_TRUE(stream.frames == m_tails[pin]) << "pin " << pin << ": " << stream.frames.size() << " frames from "
                                                 << (stream.frames.empty() ? -1 : stream.frames[0].time) << ", not "
                                                 << count << " from " << (count ? m_tails[pin][0].time : -1);
      EXPECT_EQ(stream.order, count == 0 ? "e" : "ns+" + std::string(count - 1, 's') + "e") << "pin " << pin;
      EXPECT_TRUE(count == 0 || stream.origin == m_origin) << "pin " << pin << " starts at " << stream.origin;
    }
  }

 private:
  // A picture that is due counts; of anything else all of it must be.
  Frames UpToStop(const Frames& all, bool isVideo) const {
    const auto past = [&](const ManifestFrame& frame) { return (isVideo ? frame.time : End(frame)) > m_stop; };
    return {all.begin(), std::ranges::find_if(all, past)};
  }

  // From the last key frame that is not after the start; the segment starts with the last picture that is not.
  void BeginWithPictures(std::size_t pin) {
    Frames& pictures = m_tails[pin];
    const auto isKey = [&](const ManifestFrame& frame) { return frame.key && frame.time <= m_start; };
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
    for (const ManifestFrame& frame : pictures) {
      keys += frame.key ? 1 : 0;
      (frame.time <= m_start ? latest : beyond) =
          frame.time <= m_start ? std::max(latest, frame.time) : std::min(beyond, frame.time);
      if (keys >= 2 && (beyond != kUnknownDuration || m_start == 0)) break;
    }
    return latest != -kUnknownDuration ? latest : beyond;
  }

  // What comes before the first picture is of no use as long as it leads, and never what is over at the start.
  void DropWhatLeads(Frames& frames) const {
    const auto useful = [&](const ManifestFrame& frame) { return frame.time >= m_first; };
    frames.erase(frames.begin(), std::ranges::find_if(frames, useful));
    std::erase_if(frames, [&](const ManifestFrame& frame) { return frame.time < m_origin && End(frame) < m_origin; });
  }

  const std::int64_t m_start;
  const std::int64_t m_stop;
  std::int64_t m_origin;
  std::int64_t m_first = -kUnknownDuration;
  std::vector<Frames> m_upToStop;  // what there is before the stop, of each pin
  std::vector<Frames> m_tails;     // what of it comes
};

const std::vector<ManifestFile>& Files() {
  static const std::vector<ManifestFile> files = [] {
    std::vector<ManifestFile> found = ReadManifest(CorpusFolder());
    std::erase_if(found,
                  [](const ManifestFile& file) { return !file.opens || file.robustness || file.tracks.empty(); });
    return found;
  }();
  return files;
}

// Ends, middles, and a few key frames with their neighbours.
std::set<std::int64_t> Places(const ManifestFile& file, const std::vector<Stream>& whole) {
  if (!file.seeks.empty()) {
    std::set<std::int64_t> listed;
    for (const ManifestSeek& seek : file.seeks) listed.insert(seek.start);
    return listed;
  }
  constexpr std::size_t kKeyFrames = 6;
  std::vector<std::int64_t> keys;
  for (const ManifestFrame& frame : whole.front().frames) {
    if (frame.key) keys.push_back(frame.time);
  }
  if (keys.empty()) keys.push_back(0);
  const std::int64_t last = file.duration > 0 ? file.duration : keys.back();
  std::set<std::int64_t> places = {0, last / 10, last / 2, last / 10 * 9, last};
  for (std::size_t k = 0; k < kKeyFrames; ++k) {
    const std::int64_t time =
        keys[k == 1 ? std::min<std::size_t>(1, keys.size() - 1) : k * (keys.size() - 1) / (kKeyFrames - 1)];
    places.insert({time - 1, time, time + 1});
  }
  std::erase_if(places, [&](std::int64_t place) { return place < 0 || place > last; });
  return places;
}

class SeekTable : public testing::TestWithParam<std::size_t> {};

TEST_P(SeekTable, DeliversTheTail) {
  const ManifestFile& file = Files()[GetParam()];
  {
    Player player(file);
    const std::vector<Stream> whole = player.PlayFromTheFront();
    const std::int64_t end = file.duration > 0 ? file.duration : kUnknownDuration;
    const Frames& frames = whole.front().frames;
    const std::int64_t middle = frames.empty() ? 0 : frames[frames.size() * 2 / 3].time;
    for (const std::int64_t place : Places(file, whole)) {
      for (const std::int64_t stop : file.seeks.empty() ? std::set{middle, end} : std::set{end}) {
        SCOPED_TRACE(file.name + " from " + std::to_string(place) + " to " + std::to_string(stop));
        Expectation expected(player, whole, place, stop <= 0 || stop < place ? end : std::min(stop, end));
        const auto listed = std::ranges::find(file.seeks, place, &ManifestSeek::start);
        if (listed != file.seeks.end()) expected.Replace(*listed);
        for (const bool whileRunning : {false, true}) expected.Compare(player.Seek(place, stop, whileRunning));
        if (HasFailure()) return;
      }
    }
  }
  EXPECT_TRUE(ModuleBecomesIdle());
}

INSTANTIATE_TEST_SUITE_P(Corpus, SeekTable, testing::Range<std::size_t>(0, Files().size()),
                         [](const auto& one) { return CaseName(Files()[one.param]); });

}  // namespace
}  // namespace tarvex::test
