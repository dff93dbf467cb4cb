// A Cluster destroyed in the midst of a film costs that Cluster and its neighbours at most: what comes
// before and after them is delivered as from the whole file, also after a seek.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "fuzz/mutator.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

constexpr unsigned kClusters = 9;
constexpr unsigned kLost = 4;
constexpr unsigned kFrames = 5;  // of each track in a Cluster, 40 ms each
constexpr std::int64_t kClusterTime = kFrames * 400000LL;

struct Film {
  ByteString before;
  ByteString lost;  ///< a Cluster
  ByteString behind;
};

ByteString ClusterData(unsigned number) {
  ByteString data = Unsigned(id::kTimecode, number * kFrames * 40ULL);
  for (unsigned k = 0; k < 2 * kFrames; ++k) {
    const unsigned track = 1 + k % 2;
    const auto time = static_cast<std::int16_t>(k / 2 * 40);
    data = Join({data, SimpleBlock(track, time, Noise(2000 + 2000 * track, 100 * number + k))});
  }
  return data;
}

Film MakeFilm(bool hasSizes, bool hasCues) {
  const ByteString size = Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)});
  const ByteString headers = Join(
      {Element(id::kInfo, Float(id::kDuration, kClusters * kFrames * 40.0)),
       Element(id::kTracks, Join({TrackEntry(1, 1, "V_VP8", Element(id::kVideo, size)), TrackEntry(2, 2, "A_AC3")}))});
  const std::size_t first = (hasCues ? SeekHeadFor(id::kCues, 0).size() : 0) + headers.size();
  std::vector<ByteString> clusters(3);  // those before the lost one, it, and those behind it
  std::size_t begin = first;
  ByteString points;
  for (unsigned k = 0; k < kClusters; ++k) {
    const ByteString data = ClusterData(k);
    const ByteString cluster = hasSizes ? Element(id::kCluster, data) : ElementOfUnknownSize(id::kCluster, data);
    const ByteString place = Join({Unsigned(id::kCueTrack, 1), Unsigned(id::kCueClusterPosition, begin)});
    points = Join({points, Element(id::kCuePoint, Join({Unsigned(id::kCueTime, k * kFrames * 40ULL),
                                                        Element(id::kCueTrackPositions, place)}))});
    ByteString& part = clusters[k < kLost ? 0 : k == kLost ? 1 : 2];
    part = Join({part, cluster});
    begin += cluster.size();
  }
  const ByteString front = hasCues ? Join({SeekHeadFor(id::kCues, begin), headers}) : headers;
  const ByteString back = hasCues ? Join({clusters[2], Element(id::kCues, points)}) : clusters[2];
  const std::size_t whole = front.size() + clusters[0].size() + clusters[1].size() + back.size();
  return {Join({EbmlHead(), ElementDeclaring(id::kSegment, whole, Join({front, clusters[0]}))}), clusters[1], back};
}

using Frames = std::set<std::tuple<std::int64_t, std::size_t, std::string>>;  // time in the film, pin, checksum

Frames Play(const ByteString& bytes, LONGLONG start = 0) {
  TestGraph graph;
  EXPECT_EQ(graph.Open(SourceFilter::FromBytes(bytes).Get()), S_OK);
  EXPECT_EQ(graph.ConnectSinks(SinkKind::kRecording), S_OK);
  const auto seeking = QueryFor<IMediaSeeking>(graph.OutputPins().at(0).Get());
  EXPECT_EQ(seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning), S_OK);
  EXPECT_TRUE(SUCCEEDED(graph.Run()));
  EXPECT_TRUE(graph.WaitForEnd());
  Frames frames;
  for (std::size_t pin = 0; pin < graph.Sinks().size(); ++pin) {
    std::int64_t origin = 0;
    for (const SinkEvent& event : graph.Sink(pin).Events()) {
      if (event.kind == SinkEvent::Kind::kNewSegment) origin = event.start;
      if (event.kind == SinkEvent::Kind::kSample) frames.emplace(event.start + origin, pin, event.sha1);
    }
  }
  return frames;
}

/// Those of all Clusters from there on but the lost one and its neighbours.
Frames WithoutNeighbours(const Frames& whole, unsigned from) {
  Frames frames;
  for (const auto& frame : whole) {
    const auto cluster = std::get<0>(frame) / kClusterTime;
    if (cluster >= from && (cluster < kLost - 1 || cluster > kLost + 1)) frames.insert(frame);
  }
  EXPECT_FALSE(frames.empty());
  return frames;
}

// The Cues lead into the damage, and without them an index is made of what is left.
TEST(LostCluster, CostsItsNeighboursAtMost) {
  for (const auto& [hasSizes, hasCues] : {std::pair(true, true), {true, false}, {false, true}, {false, false}}) {
    const Film film = MakeFilm(hasSizes, hasCues);
    const fuzz::Mutator mutator(film.lost);
    const Frames frames = Play(Join({film.before, film.lost, film.behind}));
    for (std::uint_fast32_t seed = 1; seed <= 200; ++seed) {
      SCOPED_TRACE("sizes " + std::to_string(hasSizes) + ", Cues " + std::to_string(hasCues) + ", seed " +
                   std::to_string(seed));
      const ByteString lost = seed % 20 == 0 ? Noise(film.lost.size(), seed) : mutator.Mutated(seed);
      const ByteString damaged = Join({film.before, lost, film.behind});
      EXPECT_TRUE(std::ranges::includes(Play(damaged), WithoutNeighbours(frames, 0)));
      const LONGLONG within = kLost * kClusterTime + kClusterTime / 2;
      EXPECT_TRUE(std::ranges::includes(Play(damaged, within), WithoutNeighbours(frames, kLost)));
    }
  }
}

}  // namespace
}  // namespace tarvex::test
