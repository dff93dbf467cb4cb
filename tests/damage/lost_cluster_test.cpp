// A Cluster destroyed in the midst of a film costs that Cluster and its neighbours at most: what comes
// before and after them is delivered as from the whole file, also after a seek.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/support/ebml_writer.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

constexpr unsigned kClusters = 9;
constexpr unsigned kLost = 4;
constexpr unsigned kFrames = 5;  // of each track in a Cluster, 40 ms each
constexpr std::int64_t kClusterTime = kFrames * 400000LL;

struct Film {
  ByteString bytes;
  // Of the Cluster to be lost: where it begins in the file, where its data do, and where it ends.
  std::size_t begin = 0;
  std::size_t data = 0;
  std::size_t end = 0;
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
  Film film;
  ByteString clusters;
  ByteString points;
  for (unsigned k = 0; k < kClusters; ++k) {
    const ByteString data = ClusterData(k);
    const ByteString cluster = hasSizes ? Element(id::kCluster, data) : ElementOfUnknownSize(id::kCluster, data);
    const std::size_t begin = first + clusters.size();
    if (k == kLost) film = {{}, begin, begin + cluster.size() - data.size(), begin + cluster.size()};
    const ByteString place = Join({Unsigned(id::kCueTrack, 1), Unsigned(id::kCueClusterPosition, begin)});
    points = Join({points, Element(id::kCuePoint, Join({Unsigned(id::kCueTime, k * kFrames * 40ULL),
                                                        Element(id::kCueTrackPositions, place)}))});
    clusters = Join({clusters, cluster});
  }
  const ByteString segment =
      hasCues ? Join({SeekHeadFor(id::kCues, first + clusters.size()), headers, clusters, Element(id::kCues, points)})
              : Join({headers, clusters});
  film.bytes = MatroskaFile(segment);
  for (std::size_t* place : {&film.begin, &film.data, &film.end}) *place += film.bytes.size() - segment.size();
  return film;
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

void Overwrite(Film& film, std::size_t begin, std::size_t end, const ByteString& with) {
  for (std::size_t k = begin; k < end; ++k) film.bytes[k] = with[(k - begin) % with.size()];
}

void SetSize(Film& film, std::uint64_t size) {
  const std::size_t at = film.begin + 4;
  std::ranges::copy(Vint(size, static_cast<unsigned>(film.data - at)),
                    film.bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

constexpr struct {
  const char* name;
  void (*apply)(Film& film, std::uint_fast32_t seed);
  bool needsSizes = false;
} kDamages[] = {
    {"head to zeros", [](Film& film, auto /*seed*/) { Overwrite(film, film.begin, film.data, {0}); }},
    {"head to ones", [](Film& film, auto /*seed*/) { Overwrite(film, film.begin, film.data, {0xFF}); }},
    {"head to noise", [](Film& film, auto seed) { Overwrite(film, film.begin, film.data, Noise(9, seed)); }},
    {"data to zeros", [](Film& film, auto /*seed*/) { Overwrite(film, film.data, film.end, {0}); }},
    {"data to noise", [](Film& film, auto seed) { Overwrite(film, film.data, film.end, Noise(40000, seed)); }},
    {"all to zeros", [](Film& film, auto /*seed*/) { Overwrite(film, film.begin, film.end, {0}); }},
    {"all to noise", [](Film& film, auto seed) { Overwrite(film, film.begin, film.end, Noise(40000, seed)); }},
    {"end and next head", [](Film& film, auto /*seed*/) { Overwrite(film, film.end - 9000, film.end + 30, {0}); }},
    {"bytes missing",
     [](Film& film, auto /*seed*/) {
       const auto at = film.bytes.begin() + static_cast<std::ptrdiff_t>(film.data) + 1000;
       film.bytes.erase(at, at + 8000);
     }},
    {"bytes put in",
     [](Film& film, auto seed) {
       const ByteString more = Noise(3333, seed);
       film.bytes.insert(film.bytes.begin() + static_cast<std::ptrdiff_t>(film.data) + 100, more.begin(), more.end());
     }},
    {"size too small", [](Film& film, auto /*seed*/) { SetSize(film, (film.end - film.data) / 2); }, true},
    {"size too large", [](Film& film, auto /*seed*/) { SetSize(film, film.end - film.data + 9999); }, true},
    {"size behind the file", [](Film& film, auto /*seed*/) { SetSize(film, (film.end - film.data) * 7); }, true},
};

// The Cues lead into the damage, and without them an index is made of what is left.
TEST(LostCluster, CostsItsNeighboursAtMost) {
  for (const auto& [hasSizes, hasCues] : {std::pair(true, true), {true, false}, {false, true}, {false, false}}) {
    const Film whole = MakeFilm(hasSizes, hasCues);
    const Frames frames = Play(whole.bytes);
    for (const auto& damage : kDamages) {
      if (damage.needsSizes && !hasSizes) continue;
      for (std::uint_fast32_t seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(std::string(damage.name) + ", sizes " + std::to_string(hasSizes) + ", Cues " +
                     std::to_string(hasCues) + ", seed " + std::to_string(seed));
        Film film = whole;
        damage.apply(film, seed);
        EXPECT_TRUE(std::ranges::includes(Play(film.bytes), WithoutNeighbours(frames, 0)));
        const LONGLONG within = kLost * kClusterTime + kClusterTime / 2;
        EXPECT_TRUE(std::ranges::includes(Play(film.bytes, within), WithoutNeighbours(frames, kLost)));
      }
    }
  }
}

}  // namespace
}  // namespace tarvex::test
