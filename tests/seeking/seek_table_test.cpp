// Every file of the corpus with more than one key frame is sought to many places, while stopped and while
// running. What every pin delivers up to the end is compared with a model that knows the file's frames from
// the manifest. Another corpus is taken by TARVEX_CORPUS.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "filter/interface_ids.h"
#include "framework/thread.h"
#include "tests/corpus/manifest.h"
#include "tests/seeking/block_order.h"
#include "tests/seeking/delivery_model.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

constexpr std::int64_t kUnknownDuration = 0x7FFFFFFFFFFFFFFF;

/// One file with all its frames in file order. `frames` is empty when the manifest does not tell enough.
struct SeekFile {
  ManifestFile file;
  std::vector<ModelFrame> frames;  // `pin` holds the track number
};

std::vector<ModelFrame> FramesInOrder(const ManifestFile& file) {
  std::vector<ModelFrame> frames;
  std::map<std::uint64_t, std::size_t> taken;
  for (const BlockPlace& block : BlockOrder(ReadWholeFile(file.path))) {
    const auto track = file.frames.find(static_cast<std::uint32_t>(block.track));
    if (track == file.frames.end()) continue;
    std::size_t& next = taken[block.track];
    if (next + block.frames > track->second.rows.size()) return {};
    for (std::size_t k = 0; k < block.frames; ++k) {
      frames.push_back({block.cluster, static_cast<std::size_t>(block.track), track->second.rows[next++]});
    }
  }
  for (const auto& [number, rows] : file.frames) {
    if (rows.count != taken[number]) return {};
  }
  return frames;
}

// Every entry has to be a Cluster of the file: damage is another test's.
bool IsPlain(const SeekFile& each) {
  std::set<std::uint64_t> clusters;
  for (const ModelFrame& frame : each.frames) clusters.insert(frame.cluster);
  const bool plain = each.file.seekIndexIsWhole && std::ranges::all_of(each.file.seekIndex, [&](const auto& entry) {
                       return clusters.contains(entry.position);
                     });
  return plain && std::ranges::count_if(each.frames, [](const auto& frame) { return frame.frame.key; }) > 1;
}

const std::vector<SeekFile>& Files() {
  static const std::vector<SeekFile> files = [] {
    std::vector<SeekFile> found;
    for (const ManifestFile& file : ReadManifest(CorpusFolder())) {
      if (!file.opens || file.robustness || file.upToDamage) continue;
      SeekFile each{file, FramesInOrder(file)};
      if (IsPlain(each)) found.push_back(std::move(each));
    }
    return found;
  }();
  return files;
}

// Ends, middles, and a few key frames with their neighbours.
std::vector<std::int64_t> Places(const SeekFile& each) {
  constexpr std::size_t kKeyFrames = 6;
  std::vector<std::int64_t> keys;
  for (const ModelFrame& frame : each.frames) {
    if (frame.frame.key) keys.push_back(frame.frame.time);
  }
  const std::int64_t last = each.file.duration > 0 ? each.file.duration : keys.back();
  std::set<std::int64_t> places = {0, last / 10, last / 2, last / 10 * 9, last, last + 1};
  for (std::size_t k = 0; k < kKeyFrames; ++k) {
    const std::int64_t time = keys[k * (keys.size() - 1) / (kKeyFrames - 1)];
    places.insert({time - 1, time, time + 1});
  }
  std::erase_if(places, [](std::int64_t place) { return place < 0; });
  return {places.begin(), places.end()};
}

/// The tracks that the pins carry, in pin order.
std::vector<const ManifestTrack*> CarriedTracks(const TestGraph& graph, const ManifestFile& file) {
  std::vector<const ManifestTrack*> inOrder;
  for (const std::uint32_t type : {1U, 2U, 17U}) {
    std::map<std::uint32_t, const ManifestTrack*> tracks;
    for (const ManifestTrack& track : file.tracks) {
      if (track.type == type) tracks.emplace(track.number.value(), &track);
    }
    for (const auto& [number, track] : tracks) inOrder.push_back(track);
  }
  std::vector<const ManifestTrack*> carried;
  const auto streams = QueryFor<IAMStreamSelect>(graph.Splitter());
  for (LONG k = 0; k < static_cast<LONG>(inOrder.size()); ++k) {
    DWORD flags = 0;
    streams->Info(k, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr);
    if ((flags & AMSTREAMSELECTINFO_ENABLED) != 0) carried.push_back(inOrder[static_cast<std::size_t>(k)]);
  }
  return carried;
}

/// A file in a graph, sought again and again.
class Player {
 public:
  explicit Player(const SeekFile& each) : m_each(each) {
    EXPECT_EQ(m_graph.Open(each.file.path), S_OK);
    m_tracks = CarriedTracks(m_graph, each.file);
    EXPECT_EQ(m_graph.ConnectSinks(SinkKind::kRecording), S_OK);
    m_seeking = QueryFor<IMediaSeeking>(m_graph.OutputPins().front().Get());
  }

  void Try(std::int64_t place, std::int64_t stop, bool whileRunning) {
    for (const auto& sink : m_graph.Sinks()) sink->Clear();
    if (whileRunning) {
      EXPECT_TRUE(SUCCEEDED(m_graph.Run()));
    }
    LONGLONG current = place;
    LONGLONG end = stop;
    ASSERT_EQ(m_seeking->SetPositions(&current, AM_SEEKING_AbsolutePositioning, &end, AM_SEEKING_AbsolutePositioning),
              S_OK);
    if (!whileRunning) {
      EXPECT_TRUE(SUCCEEDED(m_graph.Run()));
    }
    EXPECT_TRUE(WaitForEnds()) << "no end of stream";
    EXPECT_TRUE(SUCCEEDED(m_graph.Stop()));  // S_FALSE: the pins had ended the worker already
    Compare(current, end);
  }

 private:
  static std::vector<SinkEvent> AfterTheSeek(SinkFilter& sink) {
    std::vector<SinkEvent> events = sink.Events();
    const auto flush = std::find_if(events.rbegin(), events.rend(),
                                    [](const auto& event) { return event.kind == SinkEvent::Kind::kEndFlush; });
    events.erase(events.begin(), flush.base());
    return events;
  }

  bool WaitForEnds() {
    const auto ended = [](const auto& sink) {
      const auto events = AfterTheSeek(*sink);
      return !events.empty() && events.back().kind == SinkEvent::Kind::kEndOfStream;
    };
    for (int wait = 0; wait < 10000; ++wait) {
      if (std::ranges::all_of(m_graph.Sinks(), ended)) return true;
      SleepMilliseconds(1);
    }
    return false;
  }

  std::vector<ModelStream> Expected(std::int64_t start, std::int64_t stop) const {
    const std::int64_t duration = m_each.file.duration > 0 ? m_each.file.duration : kUnknownDuration;
    if (stop == 0 || stop < start) stop = duration;
    std::vector<ModelPin> pins;
    for (const ManifestTrack* track : m_tracks) pins.push_back({track->type == 1U});
    const std::uint64_t from = FirstCluster(m_each.file.seekIndex, start, m_each.file.duration);
    std::vector<ModelFrame> frames;
    for (const ModelFrame& each : m_each.frames) {
      const auto carrier = std::ranges::find_if(m_tracks, [&](const auto* track) { return track->number == each.pin; });
      if (each.cluster < from || carrier == m_tracks.end()) continue;
      frames.push_back({each.cluster, static_cast<std::size_t>(carrier - m_tracks.begin()), each.frame});
    }
    return Deliver(pins, frames, {start, stop});
  }

  void Compare(std::int64_t start, std::int64_t stop) {
    const std::vector<ModelStream> expected = Expected(start, stop);
    for (std::size_t k = 0; k < m_tracks.size(); ++k) {
      SCOPED_TRACE("pin " + std::to_string(k));
      CompareStream(AfterTheSeek(m_graph.Sink(k)), expected[k]);
    }
  }

  static void CompareStream(const std::vector<SinkEvent>& events, const ModelStream& expected) {
    std::string order;
    std::vector<ModelSample> samples;
    for (const SinkEvent& event : events) {
      order += event.kind == SinkEvent::Kind::kNewSegment ? 'n' : event.kind == SinkEvent::Kind::kSample ? 's' : 'e';
      if (event.kind == SinkEvent::Kind::kNewSegment) {
        EXPECT_EQ(event.start, expected.segmentStart);
      }
      if (event.kind != SinkEvent::Kind::kSample) continue;
      EXPECT_EQ(event.discontinuity, samples.empty());
      samples.push_back({event.start, event.stop, event.key, event.sha1});
    }
    const std::string segment = expected.samples.empty() ? "" : "n";
    EXPECT_EQ(order, segment + std::string(expected.samples.size(), 's') + "e");
    EXPECT_TRUE(samples == expected.samples) << "the samples differ";
  }

  const SeekFile& m_each;
  TestGraph m_graph;
  std::vector<const ManifestTrack*> m_tracks;
  ComPtr<IMediaSeeking> m_seeking;
};

class SeekTable : public testing::TestWithParam<std::size_t> {};

TEST_P(SeekTable, DeliversWhatTheModelSays) {
  const SeekFile& each = Files()[GetParam()];
  {
    Player player(each);
    const std::int64_t end = each.file.duration > 0 ? each.file.duration : kUnknownDuration;
    const std::int64_t middle = each.frames[each.frames.size() * 2 / 3].frame.time;
    for (const std::int64_t place : Places(each)) {
      for (const std::int64_t stop : {end, std::max<std::int64_t>(middle, 0)}) {
        SCOPED_TRACE(each.file.name + " from " + std::to_string(place) + " to " + std::to_string(stop));
        player.Try(place, stop, false);
        player.Try(place, stop, true);
        if (HasFailure()) return;
      }
    }
  }
  EXPECT_TRUE(ModuleBecomesIdle());
}

TEST(SeekTableItself, CoversTheCorpus) {
  EXPECT_GE(Files().size(), 60U) << "most files of the corpus are to be compared";
}

INSTANTIATE_TEST_SUITE_P(Corpus, SeekTable, testing::Range<std::size_t>(0, Files().size()),
                         [](const auto& one) { return CaseName(Files()[one.param].file); });

}  // namespace
}  // namespace tarvex::test
