// A cluster destroyed in the midst of a film costs that cluster and its neighbours at most: what comes
// before and after them is delivered as from the whole file, also after a seek.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <ostream>
#include <set>

#include "tests/support/ebml_writer.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

constexpr unsigned kClusters = 9;
constexpr unsigned kLost = 4;
constexpr unsigned kFrames = 5;  // of each track in a cluster, 40 ms each
constexpr std::int64_t kClusterTime = kFrames * 400000LL;

/// Where a cluster begins in the file, where its data do, and where it ends.
struct Range {
  std::size_t begin = 0;
  std::size_t data = 0;
  std::size_t end = 0;
};

enum class Sizes { kKnown, kUnknown };

struct Film {
  ByteString bytes;
  std::vector<Range> clusters;
};

ByteString ClusterData(unsigned number) {
  ByteString data = Unsigned(id::kTimecode, number * kFrames * 40ULL);
  for (unsigned k = 0; k < kFrames; ++k) {
    for (const std::uint64_t track : {1U, 2U}) {
      const auto time = static_cast<std::int16_t>(k * 40);
      data = Join({data, SimpleBlock(track, time, Noise(2000 + 2000 * track, 100 * number + 2 * k + track))});
    }
  }
  return data;
}

Film MakeFilm(Sizes sizes, bool withCues) {
  const ByteString tracks = Element(
      id::kTracks,
      Join({TrackEntry(1, 1, "V_VP8",
                       Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)}))),
            TrackEntry(2, 2, "A_AC3")}));
  const ByteString info = Element(
      id::kInfo, Join({Unsigned(id::kTimecodeScale, 1000000), Float(id::kDuration, kClusters * kFrames * 40.0)}));
  const std::size_t seekHead = withCues ? SeekHeadFor(id::kCues, 0).size() : 0;
  ByteString clusters;
  ByteString points;
  std::vector<Range> ranges;
  const std::size_t first = seekHead + info.size() + tracks.size();
  for (unsigned k = 0; k < kClusters; ++k) {
    const ByteString data = ClusterData(k);
    const ByteString cluster =
        sizes == Sizes::kKnown ? Element(id::kCluster, data) : ElementOfUnknownSize(id::kCluster, data);
    const std::size_t begin = first + clusters.size();
    ranges.push_back({begin, begin + cluster.size() - data.size(), begin + cluster.size()});
    points = Join({points, Element(id::kCuePoint, Join({Unsigned(id::kCueTime, k * kFrames * 40ULL),
                                                        Element(id::kCueTrackPositions,
                                                                Join({Unsigned(id::kCueTrack, 1),
                                                                      Unsigned(id::kCueClusterPosition, begin)}))}))});
    clusters = Join({clusters, cluster});
  }
  const ByteString cues = withCues ? Element(id::kCues, points) : ByteString{};
  const ByteString head = withCues ? SeekHeadFor(id::kCues, first + clusters.size()) : ByteString{};
  const ByteString segment = Join({head, info, tracks, clusters, cues});
  Film film{MatroskaFile(segment), std::move(ranges)};
  const std::size_t origin = film.bytes.size() - segment.size();
  for (Range& range : film.clusters) range = {range.begin + origin, range.data + origin, range.end + origin};
  return film;
}

using Frames = std::set<std::tuple<std::size_t, std::int64_t, std::string>>;  // pin, time, checksum

/// Plays from `start` to the end; times count from the front of the film.
Frames Play(const ByteString& bytes, LONGLONG start = 0) {
  TestGraph graph;
  EXPECT_EQ(graph.Open(SourceFilter::FromBytes(bytes).Get()), S_OK);
  EXPECT_EQ(graph.ConnectSinks(SinkKind::kRecording), S_OK);
  if (start != 0) {
    const auto seeking = QueryFor<IMediaSeeking>(graph.OutputPins().at(0).Get());
    EXPECT_EQ(seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning), S_OK);
  }
  EXPECT_TRUE(SUCCEEDED(graph.Run()));
  EXPECT_TRUE(graph.WaitForEnd());
  EXPECT_TRUE(SUCCEEDED(graph.Stop()));
  Frames frames;
  for (std::size_t pin = 0; pin < graph.Sinks().size(); ++pin) {
    std::int64_t origin = 0;
    for (const SinkEvent& event : graph.Sink(pin).Events()) {
      if (event.kind == SinkEvent::Kind::kNewSegment) origin = event.start;
      if (event.kind == SinkEvent::Kind::kSample) frames.emplace(pin, event.start + origin, event.sha1);
    }
  }
  return frames;
}

/// Those from the first cluster to before the last.
Frames OfClusters(const Frames& frames, unsigned first, unsigned last) {
  Frames those;
  std::copy_if(frames.begin(), frames.end(), std::inserter(those, those.end()), [=](const auto& frame) {
    return std::get<1>(frame) >= first * kClusterTime && std::get<1>(frame) < last * kClusterTime;
  });
  return those;
}

void ExpectAllOf(const Frames& wanted, const Frames& found, const char* what) {
  Frames missing;
  std::set_difference(wanted.begin(), wanted.end(), found.begin(), found.end(), std::inserter(missing, missing.end()));
  EXPECT_EQ(missing.size(), 0U) << "of " << wanted.size() << ' ' << what;
  EXPECT_FALSE(wanted.empty());
}

struct Damage {
  const char* name;
  std::function<void(ByteString&, const Range&, std::uint_fast32_t seed)> apply;
};

void Overwrite(ByteString& bytes, std::size_t begin, std::size_t end, const ByteString& with) {
  for (std::size_t k = begin; k < end; ++k) bytes[k] = with[(k - begin) % with.size()];
}

/// The size in the head of a cluster of known size.
void SetSize(ByteString& bytes, const Range& cluster, std::uint64_t size) {
  const std::size_t at = cluster.begin + 4;
  const ByteString vint = Vint(size, static_cast<unsigned>(cluster.data - at));
  std::copy(vint.begin(), vint.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

void Remove(ByteString& bytes, std::size_t begin, std::size_t end) {
  bytes.erase(bytes.begin() + static_cast<std::ptrdiff_t>(begin), bytes.begin() + static_cast<std::ptrdiff_t>(end));
}

const Damage kDamages[] = {
    {"HeadOverwrittenWithZeros",
     [](auto& bytes, auto& one, auto /*seed*/) { Overwrite(bytes, one.begin, one.data, {0}); }},
    {"HeadOverwrittenWithOnes",
     [](auto& bytes, auto& one, auto /*seed*/) { Overwrite(bytes, one.begin, one.data, {0xFF}); }},
    {"HeadOverwrittenWithNoise",
     [](auto& bytes, auto& one, auto seed) { Overwrite(bytes, one.begin, one.data, Noise(9, seed)); }},
    {"DataOverwrittenWithZeros",
     [](auto& bytes, auto& one, auto /*seed*/) { Overwrite(bytes, one.data, one.end, {0}); }},
    {"DataOverwrittenWithNoise",
     [](auto& bytes, auto& one, auto seed) { Overwrite(bytes, one.data, one.end, Noise(40000, seed)); }},
    {"AllOverwrittenWithZeros",
     [](auto& bytes, auto& one, auto /*seed*/) { Overwrite(bytes, one.begin, one.end, {0}); }},
    {"AllOverwrittenWithNoise",
     [](auto& bytes, auto& one, auto seed) { Overwrite(bytes, one.begin, one.end, Noise(40000, seed)); }},
    {"ZerosOverItsEndAndTheNextHead",
     [](auto& bytes, auto& one, auto /*seed*/) { Overwrite(bytes, one.end - 9000, one.end + 30, {0}); }},
    {"BytesMissing", [](auto& bytes, auto& one, auto /*seed*/) { Remove(bytes, one.data + 1000, one.data + 9000); }},
    {"BytesPutIn",
     [](auto& bytes, auto& one, auto seed) {
       const ByteString more = Noise(3333, seed);
       bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(one.data + 100), more.begin(), more.end());
     }},
    {"SizeTooSmall", [](auto& bytes, auto& one, auto /*seed*/) { SetSize(bytes, one, (one.end - one.data) / 2); }},
    {"SizeTooLarge", [](auto& bytes, auto& one, auto /*seed*/) { SetSize(bytes, one, one.end - one.data + 9999); }},
    {"SizeBehindTheFile", [](auto& bytes, auto& one, auto /*seed*/) { SetSize(bytes, one, (one.end - one.data) * 7); }},
};

struct Case {
  Damage damage;
  Sizes sizes;
};

void PrintTo(const Case& one, std::ostream* out) { *out << one.damage.name; }

std::vector<Case> Cases() {
  std::vector<Case> cases;
  for (const Damage& damage : kDamages) {
    cases.push_back({damage, Sizes::kKnown});
    if (!std::string_view(damage.name).starts_with("Size")) cases.push_back({damage, Sizes::kUnknown});
  }
  return cases;
}

class LostCluster : public testing::TestWithParam<Case> {
 protected:
  void TearDown() override { EXPECT_TRUE(ModuleBecomesIdle()); }

  static ByteString Damaged(const Film& film, std::uint_fast32_t seed) {
    ByteString bytes = film.bytes;
    GetParam().damage.apply(bytes, film.clusters[kLost], seed);
    return bytes;
  }

  static constexpr std::uint_fast32_t kSeeds = 6;
};

TEST_P(LostCluster, CostsItsNeighboursAtMost) {
  const Film film = MakeFilm(GetParam().sizes, false);
  const Frames whole = Play(film.bytes);
  for (std::uint_fast32_t seed = 1; seed <= kSeeds; ++seed) {
    SCOPED_TRACE(seed);
    const Frames damaged = Play(Damaged(film, seed));
    ExpectAllOf(OfClusters(whole, 0, kLost - 1), damaged, "before the neighbours");
    ExpectAllOf(OfClusters(whole, kLost + 2, kClusters), damaged, "behind the neighbours");
  }
}

// The index may lead into the damage, or have been made from what is left.
TEST_P(LostCluster, IsPassedByASeekIntoIt) {
  for (const bool withCues : {false, true}) {
    SCOPED_TRACE(withCues ? "with Cues" : "without Cues");
    const Film film = MakeFilm(GetParam().sizes, withCues);
    const Frames whole = Play(film.bytes);
    for (std::uint_fast32_t seed = 1; seed <= kSeeds; ++seed) {
      SCOPED_TRACE(seed);
      const Frames damaged = Play(Damaged(film, seed), kLost * kClusterTime + kClusterTime / 2);
      ExpectAllOf(OfClusters(whole, kLost + 2, kClusters), damaged, "behind the neighbours");
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Damages, LostCluster, testing::ValuesIn(Cases()), [](const auto& one) {
  return std::string(one.param.damage.name) + (one.param.sizes == Sizes::kKnown ? "" : "_unknown_sizes");
});

}  // namespace
}  // namespace tarvex::test
