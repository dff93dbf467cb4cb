// What a frame costs on the heap while a file plays: nothing.
#include <gtest/gtest.h>

#include "pins/limits.h"
#include "tests/damage/heap_count.h"
#include "tests/support/deflated.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

constexpr std::size_t kClusters = 100;
constexpr std::size_t kFew = 50;    // frames of a Cluster
constexpr std::size_t kMany = 250;  // the same
constexpr std::size_t kFrameBytes = 3000;

ByteString Compression(const ByteString& children) {
  return Element(id::kContentEncodings, Element(id::kContentEncoding, Element(id::kContentCompression, children)));
}

struct Track {
  const char* name;
  ByteString encodings;
  ByteString frame;
};

std::vector<Track> Tracks() {
  const ByteString frame = Noise(kFrameBytes, 1);
  return {{"plain", {}, frame},
          {"stripped",
           Compression(Join({Unsigned(id::kContentCompAlgo, 3), Element(id::kContentCompSettings, {1, 2})})), frame},
          {"zlib", Compression(Unsigned(id::kContentCompAlgo, 0)), Deflated(frame)}};
}

ByteString Film(const Track& track, std::size_t framesOfACluster) {
  ByteString clusters;
  for (std::size_t cluster = 0; cluster < kClusters; ++cluster) {
    ByteString blocks;
    for (std::size_t frame = 0; frame < framesOfACluster; ++frame) {
      const ByteString block = SimpleBlock(1, static_cast<std::int16_t>(frame), track.frame);
      blocks.insert(blocks.end(), block.begin(), block.end());
    }
    const ByteString bytes = Cluster(cluster * 1000, blocks);
    clusters.insert(clusters.end(), bytes.begin(), bytes.end());
  }
  const ByteString entry = TrackEntry(1, 2, "A_AC3", track.encodings);
  return MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, entry), clusters}));
}

std::uint64_t AllocationsPlaying(const ByteString& film) {
  TestGraph graph;
  const auto source = SourceFilter::FromBytes(film);
  EXPECT_EQ(graph.Open(source.Get()), S_OK);
  EXPECT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
  const std::uint64_t before = HeapCount::OfAllThreads();
  EXPECT_TRUE(SUCCEEDED(graph.Run()));
  EXPECT_TRUE(graph.WaitForEnd());
  return HeapCount::OfAllThreads() - before;
}

TEST(SteadyState, FrameCostsNoAllocation) {
  // Objects of all the samples that the ring can hold, and lists that keep their room.
  constexpr std::uint64_t kGrowth = limits::kLargestSample / kFrameBytes + 1000;
  static_assert(kClusters * (kMany - kFew) > 2 * kGrowth);
  for (const Track& track : Tracks()) {
    SCOPED_TRACE(track.name);
    const std::uint64_t few = AllocationsPlaying(Film(track, kFew));
    const std::uint64_t many = AllocationsPlaying(Film(track, kMany));
    EXPECT_GT(few, 100U) << "nothing was counted";
    EXPECT_LE(many, few + kGrowth);
  }
}

}  // namespace
}  // namespace tarvex::test
