// Seeking without Cues: a start found by looking only where its time can be leads to the same frame as one from an
// index of everything. Over files of every kind that muxers write, at random, over damaged ones, and over the corpus
// with its Cues hidden. TARVEX_SEARCHED_FILES says how many files are generated of each kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "fuzz/cases.h"
#include "fuzz/mutator.h"
#include "tests/corpus/manifest.h"
#include "tests/scanner/recording.h"
#include "tests/support/source_filter.h"

namespace tarvex::test {
namespace {

/// As in the product, but that small files are searched too.
constexpr SearchReach kSmallReach = {
    .smallestFile = 0, .firstChunk = 256, .chunk = 1024, .closest = 1024, .budget = std::uint64_t{64} << 20};

/// A file of sound or pictures at random, without Cues, and frames that now and then look like Clusters. What else may
/// stand in a file, those of the corpus have. No two frames are the same.
ByteString GenerateFile(std::mt19937& random, std::size_t frameBytes, std::size_t length) {
  const auto below = [&](std::size_t limit) { return random() % limit; };
  const std::size_t mostBlocks = 1 + below(30);
  const std::size_t keyEvery = 1 + below(40);
  const bool hasClustersInFrames = below(4) == 0;
  const bool isUnknown = below(5) == 0;
  ByteString clusters;
  std::uint64_t time = below(100);
  for (std::size_t count = (1 + below(below(4) == 0 ? 300 : 40)) * length; count > 0; --count) {
    ByteString data = Unsigned(id::kTimecode, time);
    std::uint64_t relative = 0;
    for (std::size_t block = 1 + below(mostBlocks); block > 0; --block, relative += below(40)) {
      ByteString frame = Noise(5 + below(frameBytes), random());
      if (hasClustersInFrames && below(60) == 0) frame = Join({frame, Cluster(time + below(3000), frame)});
      data = Join({data, SimpleBlock(1, static_cast<std::int16_t>(relative), frame, below(keyEvery) == 0)});
    }
    time += relative + 1 + below(below(20) == 0 ? 20000 : 500);
    ByteString cluster = isUnknown ? ElementOfUnknownSize(id::kCluster, data) : Element(id::kCluster, data);
    if (below(60) == 0) cluster = Join({Element(id::kVoid, Join({Cluster(time + 1, {}), Zeros(below(40))})), cluster});
    clusters.insert(clusters.end(), cluster.begin(), cluster.end());
  }
  return MatroskaFile(Join({Element(id::kInfo, Float(id::kDuration, static_cast<double>(time))),
                            Element(id::kTracks, TrackEntry(1, 1 + below(2), "A")), clusters}));
}

/// The first frames from there on.
const std::vector<RecordedFrame>& FramesFrom(OpenFile& file, std::uint64_t time) {
  file.frames.clear();
  file.framesToTake = 2;
  file.scanner.SetStartTime(time);
  file.scanner.Process();
  return file.frames;
}

std::vector<std::uint64_t> Places(CEbmlScanner& scanner, std::mt19937& random) {
  const auto& index = scanner.Index();
  const std::uint64_t end = std::max<std::uint64_t>(scanner.Duration(), 1);
  std::vector<std::uint64_t> places = {1, end, end + 1};
  for (int k = 0; k < 6; ++k) places.push_back(1 + random() * (end / 0xFFFFFFFF + 1) % end);
  for (int k = 0; k < 3 && !index.empty(); ++k) {
    const std::uint64_t time = index[random() % index.size()].time;
    if (static_cast<std::int64_t>(time) > 1) places.insert(places.end(), {time - 1, time, time + 1});
  }
  std::ranges::shuffle(places, random);
  return places;
}

/// What came of seeks in files at random.
struct Searched {
  std::mt19937 random{1};
  unsigned files = 0;
  unsigned different = 0;  ///< files of which a search leads elsewhere
  unsigned readWhole = 0;  ///< files of which a search said that everything has to be read

  /// Every place with an index of everything, and by searching. A file may be refused.
  void Compare(const ByteString& bytes, const SearchReach& reach = kSmallReach) try {
    OpenFile whole(bytes);
    OpenFile searched(bytes);
    searched.scanner.SetSearchReach(reach);
    whole.scanner.BuildIndex();
    ++files;
    const auto leadsElsewhere = [&](std::uint64_t place) {
      return FramesFrom(searched, place) != FramesFrom(whole, place);
    };
    if (std::ranges::any_of(Places(whole.scanner, random), leadsElsewhere)) ++different;
    if (!searched.scanner.Index().empty()) ++readWhole;
  } catch (const MessageError&) {
  }
};

// Small files are read whole otherwise. Here they are searched, and damage far from where that looks may mean something
// to an index: about one file in 500 leads elsewhere then.
TEST(ClusterSearch, LeadsWhereTheIndexOfEverythingLeads) {
  const unsigned files = fuzz::FromEnvironment("TARVEX_SEARCHED_FILES", 320);
  Searched whole;
  Searched damaged;
  for (unsigned k = 0; k < files; ++k) {
    const ByteString file = GenerateFile(whole.random, 60, 1);
    whole.Compare(file);
    damaged.Compare(fuzz::Mutator(file).Mutated(damaged.random()));
  }
  EXPECT_LT(whole.readWhole, whole.files / 10) << "they are to be searched";
  for (const auto& file : Corpus()) {
    ByteString bytes = ReadWholeFile(file.path);
    const ByteString cues = Id(id::kCues);
    while (const auto found = std::ranges::search(bytes, cues)) found.front() = id::kVoid;
    whole.Compare(bytes);
    damaged.Compare(fuzz::Mutator(std::move(bytes)).Mutated(damaged.random()));
  }
  EXPECT_EQ(whole.different, 0U);
  EXPECT_GT(whole.files, files + 100);
  EXPECT_LE(damaged.different, 2 + damaged.files / 300);

  Searched large{std::mt19937(4)};
  for (unsigned k = 0; k < files / 40; ++k) {
    const ByteString file = GenerateFile(large.random, 1500, 100);
    if (file.size() < SearchReach().smallestFile) continue;
    large.Compare(file, {});
    large.Compare(fuzz::Mutator(file).Mutated(large.random()), {});
  }
  EXPECT_EQ(large.different, 0U);
  EXPECT_GT(large.files, large.readWhole);
}

/// 20 MB in blocks of 100 bytes and Clusters of 5 ms a block, the first of each a key frame.
ByteString SmallBlocks(std::size_t blocksPerCluster, std::uint64_t from = 0) {
  constexpr std::uint64_t kBlocks = 200000;
  const ByteString frame = Noise(100, 1);
  const ByteString blocks =
      Join({SimpleBlock(1, 0, frame), Repeat(SimpleBlock(1, 4, frame, false), blocksPerCluster - 1)});
  ByteString clusters;
  for (std::uint64_t k = 0; k < kBlocks; k += blocksPerCluster) {
    const ByteString cluster = Cluster(from + k * 5, blocks);
    clusters.insert(clusters.end(), cluster.begin(), cluster.end());
  }
  return FileOf(clusters);
}

constexpr std::uint64_t kPlace = 5000000000;

TEST(ClusterSearch, TakesFewReadsAndTheIndexOfSmallBlocksTakesLargeOnes) {
  for (const std::size_t blocksPerCluster : {1000U, 5U}) {
    const ByteString bytes = SmallBlocks(blocksPerCluster);
    const auto before = static_cast<std::int64_t>(kPlace - std::uint64_t{blocksPerCluster} * 50000);  // one entry
    OpenFile searched(bytes);
    const std::int64_t opening = searched.reader.reads;
    EXPECT_EQ(FramesFrom(searched, kPlace).front().start, before);
    EXPECT_LE(searched.reader.reads - opening, 60);
    EXPECT_TRUE(searched.scanner.Index().empty());
    // The same place is known now.
    const std::int64_t first = searched.reader.reads;
    EXPECT_EQ(FramesFrom(searched, kPlace + 10000).front().start, before);
    EXPECT_LE(searched.reader.reads - first, 6);

    OpenFile whole(bytes);
    whole.scanner.BuildIndex();
    EXPECT_EQ(whole.scanner.Index().size(), 200000 / blocksPerCluster);
    EXPECT_LE(whole.reader.reads - opening, static_cast<std::int64_t>(bytes.size() / (512 * 1024)) + 40);
  }
}

TEST(ClusterSearch, NothingOfOneFileIsKnownOfTheNext) {
  OpenFile second(SmallBlocks(1000, 200000));  // milliseconds
  OpenFile file(SmallBlocks(1000, 100000));    // with its Clusters at the same positions
  EXPECT_FALSE(FramesFrom(file, 5000000000).empty());
  file.scanner.Reset();
  file.scanner.SetCallback(&file);
  file.scanner.CanProcess(second.readAhead.Get());
  EXPECT_EQ(FramesFrom(file, 6000000000), FramesFrom(second, 6000000000));
  EXPECT_TRUE(file.scanner.Index().empty()) << "a contradiction to what was known";
}

}  // namespace
}  // namespace tarvex::test
