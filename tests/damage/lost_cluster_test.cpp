// A Cluster destroyed in the midst of a film costs that Cluster and its neighbours at most: what comes
// before and after them is delivered as from the whole file, also after a seek.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "fuzz/mutator.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/film.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

using Frames = std::set<std::tuple<std::int64_t, std::size_t, std::string>>;  // time in the film, pin, checksum

Frames Play(const ByteString& bytes, LONGLONG start) {
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

std::vector<std::size_t> ClustersOf(const ByteString& file) {
  const fuzz::Mutator parts(file);
  std::vector<std::size_t> clusters;
  for (const auto& element : parts.Elements()) {
    if (element.header.id == id::kCluster) clusters.push_back(element.position);
  }
  return clusters;
}

/// Every Cluster of unknown size.
ByteString WithoutSizes(ByteString file) {
  const fuzz::Mutator parts(file);
  for (const auto& [position, header] : parts.Elements()) {
    if (header.id != id::kCluster) continue;
    const ByteString size = Vint((std::uint64_t{1} << 7 * header.sizeLength) - 1, header.sizeLength);
    std::ranges::copy(size, file.begin() + static_cast<std::ptrdiff_t>(position + header.idLength));
  }
  return file;
}

// The Cues lead into the damage, and without them an index is made of what is left. The Clusters of the real film are
// so small that a wrong size may stand for several.
TEST(LostCluster, CostsItsNeighboursAtMost) {
  const ByteString made = MakeMovie({.frames = 45, .framesPerCluster = 5, .frameSize = 5000});
  const ByteString real = ReadWholeFile(SourceDir() + "/tests/data/corpus/gen/small_clusters.mkv");
  for (const ByteString& film : {made, WithoutSizes(made), real, WithoutSizes(real)}) {
    const auto clusters = ClustersOf(film);
    const std::size_t middle = clusters.size() / 2;
    const auto piece = [&](std::size_t begin, std::size_t end) {
      return ByteString(film.begin() + static_cast<std::ptrdiff_t>(begin),
                        film.begin() + static_cast<std::ptrdiff_t>(end));
    };
    const auto without = [&](std::size_t begin, std::size_t end, const ByteString& instead) {
      return Join({piece(0, clusters.at(begin)), instead, piece(clusters.at(end), film.size())});
    };
    const ByteString lost = piece(clusters.at(middle), clusters.at(middle + 1));
    const std::size_t size = clusters.at(middle + 2) - clusters.at(middle - 1) - 9;
    const ByteString nothing = Join({Id(id::kVoid), Vint(size, 8), Zeros(size)});
    const Frames whole = Play(film, 0);
    const std::int64_t within = std::get<0>(*std::next(whole.begin(), std::ssize(whole) / 2));
    for (const std::int64_t start : {std::int64_t{0}, within}) {
      Frames others = Play(without(middle - 1, middle + 2, nothing), start);
      std::erase_if(others, [start](const auto& frame) { return std::get<0>(frame) < start; });
      EXPECT_TRUE(std::ranges::includes(whole, others));
      EXPECT_GT(others.size(), whole.size() / (start == 0 ? 2 : 5));
      for (std::uint_fast32_t seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE(testing::Message() << film.size() << " bytes, from " << start << ", seed " << seed);
        const bool isNoise = film.size() == real.size() || seed % 20 == 0;
        const ByteString damage = isNoise ? Noise(lost.size(), seed) : fuzz::Mutator(lost).Mutated(seed);
        EXPECT_TRUE(std::ranges::includes(Play(without(middle, middle + 1, damage), start), others));
      }
    }
  }
}

}  // namespace
}  // namespace tarvex::test
