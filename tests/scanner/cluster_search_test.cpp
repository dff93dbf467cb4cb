// Seeking without Cues: a start found by looking only where its time can be leads to the same frame as one from an
// index of everything. Over files of every kind that muxers write, at random, over damaged ones, and over the corpus
// with its Cues hidden. TARVEX_SEARCHED_FILES says how many files are generated of each kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>

#include "framework/com_ptr.h"
#include "scanner/source/read_ahead_reader.h"
#include "tests/scanner/generated_file.h"
#include "tests/scanner/recording.h"
#include "tests/support/source_dir.h"

namespace tarvex::test {
namespace {

/// So many of each kind, or a part of what the variable says.
std::uint64_t Files(std::uint64_t usually, std::uint64_t part = 1) {
  const char* text = std::getenv("TARVEX_SEARCHED_FILES");  // NOLINT(concurrency-mt-unsafe): nobody sets it
  return text == nullptr ? usually : std::strtoull(text, nullptr, 10) / part;
}

/// As in the product, but that small files are searched too.
SearchReach SmallReach() {
  return {.smallestFile = 0, .firstChunk = 256, .chunk = 1024, .closest = 1024, .budget = std::uint64_t{64} << 20};
}

/// An opened file that is asked for one start after the other.
class Opened {
 public:
  Opened(const ByteString& bytes, const SearchReach& reach) {
    m_scanner.SetSearchReach(reach);
    Reopen(bytes);
  }

  /// Another file, as a filter that is connected to another source.
  void Reopen(const ByteString& bytes) {
    m_scanner.Reset();
    m_source.emplace(bytes);
    m_reader = MakeCom<ReadAheadReader>(&*m_source);
    m_scanner.SetCallback(&m_callback);
    try {
      m_scanner.CanProcess(m_reader.Get());
    } catch (const MessageError&) {
      m_isOpen = false;
    }
  }

  /// The first frames from there on. `eventAfter` as RecordingCallback has it.
  std::vector<RecordedFrame> FramesFrom(std::uint64_t time, std::int64_t eventAfter = -1) {
    m_callback.frames.clear();
    m_callback.framesToTake = 2;
    m_callback.eventAfter = eventAfter;
    m_scanner.SetStartTime(time);
    m_wasInterrupted = m_scanner.Process();
    return m_callback.frames;
  }

  bool IsOpen() const { return m_isOpen; }
  bool WasInterrupted() const { return m_wasInterrupted; }
  bool IsIndexed() const { return !m_scanner.Index().empty(); }
  CEbmlScanner& Scanner() { return m_scanner; }
  std::int64_t Reads() const { return m_source->reads; }

 private:
  std::optional<MemoryReader> m_source;
  ComPtr<ReadAheadReader> m_reader;
  RecordingCallback m_callback;
  CEbmlScanner m_scanner;
  bool m_isOpen = true;
  bool m_wasInterrupted = false;
};

/// What came of a number of files.
struct Tally {
  std::uint64_t files = 0;
  std::uint64_t seeks = 0;
  std::uint64_t different = 0;
  std::uint64_t readWhole = 0;  ///< files of which a search said that everything has to be read
};

std::vector<std::uint64_t> Places(const std::vector<SeekPoint>& index, std::uint64_t duration, std::mt19937& random) {
  constexpr int kAnywhere = 6;
  constexpr int kEntries = 3;
  const std::uint64_t last = index.empty() ? 0 : index.back().time;
  const std::uint64_t end =
      std::max<std::uint64_t>(std::max(duration, static_cast<std::int64_t>(last) < 0 ? 0 : last), 1);
  std::vector<std::uint64_t> places = {1, end, end + 1};
  for (int k = 0; k < kAnywhere; ++k) places.push_back(1 + random() * (end / 0xFFFFFFFF + 1) % end);
  for (int k = 0; k < kEntries && !index.empty(); ++k) {
    const std::uint64_t time = index[random() % index.size()].time;
    if (static_cast<std::int64_t>(time) > 1) places.insert(places.end(), {time - 1, time, time + 1});
  }
  std::ranges::shuffle(places, random);
  return places;
}

bool IsSame(const std::vector<RecordedFrame>& one, const std::vector<RecordedFrame>& other) {
  return std::ranges::equal(one, other, [](const auto& a, const auto& b) {
    return a.track == b.track && a.start == b.start && a.data == b.data && a.key == b.key;
  });
}

/// Every place with an index of everything, and by searching.
void Compare(const ByteString& bytes, const SearchReach& reach, std::mt19937& random, Tally& tally) {
  Opened whole(bytes, {});
  Opened searched(bytes, reach);
  ASSERT_EQ(whole.IsOpen(), searched.IsOpen());
  if (!whole.IsOpen()) return;
  whole.Scanner().BuildIndex();
  ++tally.files;
  for (const std::uint64_t place : Places(whole.Scanner().Index(), whole.Scanner().Duration(), random)) {
    ++tally.seeks;
    if (IsSame(searched.FramesFrom(place), whole.FramesFrom(place))) continue;
    ++tally.different;
  }
  if (searched.IsIndexed()) ++tally.readWhole;
}

void Report(const char* kind, const Tally& tally) {
  std::printf("%s: %llu files, %llu seeks, %llu different, %llu read whole\n", kind,
              static_cast<unsigned long long>(tally.files), static_cast<unsigned long long>(tally.seeks),
              static_cast<unsigned long long>(tally.different), static_cast<unsigned long long>(tally.readWhole));
}

TEST(ClusterSearch, LeadsWhereTheIndexOfEverythingLeads) {
  std::mt19937 random(1);
  Tally tally;
  for (std::uint64_t k = Files(300); k > 0; --k) Compare(GenerateFile(random), SmallReach(), random, tally);
  Report("rising", tally);
  EXPECT_EQ(tally.different, 0U);
  EXPECT_LT(tally.readWhole, tally.files / 10) << "they are to be searched";
}

/// No identifier of Cues is left, neither their own nor in a SeekHead.
ByteString WithoutCues(ByteString bytes) {
  const ByteString cues = Id(id::kCues);
  for (auto at = bytes.begin();; *at = 0xEC) {
    at = std::search(at, bytes.end(), cues.begin(), cues.end());
    if (at == bytes.end()) return bytes;
  }
}

TEST(ClusterSearch, LeadsWhereTheIndexLeadsInTheCorpusWithItsCuesHidden) {
  std::mt19937 random(3);
  Tally tally;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(SourceDir() + "/tests/data/corpus")) {
    const std::string type = entry.path().extension().string();
    if (type != ".mkv" && type != ".mka" && type != ".mks" && type != ".webm") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    Compare(WithoutCues(ByteString(std::istreambuf_iterator<char>(file), {})), SmallReach(), random, tally);
  }
  Report("corpus", tally);
  EXPECT_EQ(tally.different, 0U);
  EXPECT_GT(tally.files, 100U);
}

// Files so small are read whole otherwise. Here they are searched, and damage far from where that looks may mean
// something to an index: about one seek in 10,000 leads elsewhere.
TEST(ClusterSearch, LeadsWhereTheIndexLeadsInDamagedFilesToo) {
  std::mt19937 random(2);
  Tally tally;
  for (std::uint64_t k = Files(300); k > 0; --k) {
    Compare(Damaged(GenerateFile(random), random), SmallReach(), random, tally);
  }
  Report("damaged", tally);
  EXPECT_LE(tally.different, 1 + tally.seeks / 5000);
}

TEST(ClusterSearch, LeadsWhereTheIndexLeadsInLargeFiles) {
  for (const bool isDamaged : {false, true}) {
    std::mt19937 random(4);
    Tally tally;
    for (std::uint64_t k = Files(8, 40); k > 0; --k) {
      ByteString bytes = GenerateFile(random, {.frameBytes = 1500, .length = 50});
      if (isDamaged) bytes = Damaged(std::move(bytes), random);
      if (bytes.size() >= SearchReach().smallestFile) Compare(bytes, {}, random, tally);
    }
    Report(isDamaged ? "large, damaged" : "large", tally);
    EXPECT_EQ(tally.different, 0U);
    EXPECT_GT(tally.files, tally.readWhole);
  }
}

std::vector<std::uint64_t> IndexedTimes(const ByteString& bytes) {
  Opened file(bytes, {});
  file.Scanner().BuildIndex();
  std::vector<std::uint64_t> times;
  for (const SeekPoint& point : file.Scanner().Index()) times.push_back(point.time);
  return times;
}

// What the quick way does not know goes through libmatroska.
TEST(ClusterIndex, IsTheSameWhetherClustersArePlainOrNot) {
  for (unsigned seed = 0; seed < 100; ++seed) {
    std::mt19937 plain(seed);
    std::mt19937 odd(seed);
    EXPECT_EQ(IndexedTimes(GenerateFile(plain, {.isWhole = true})),
              IndexedTimes(GenerateFile(odd, {.isWhole = true, .hasUnknown = true})))
        << seed;
  }
}

/// 20 MB in blocks of 100 bytes and 5 ms, the first of each Cluster a key frame.
ByteString SmallBlocks(std::uint64_t blocksPerCluster, std::uint64_t from = 0) {
  constexpr std::uint64_t kBlocks = 200000;
  ByteString blocks;
  for (std::uint64_t k = 0; k < blocksPerCluster; ++k) {
    const ByteString block =
        SimpleBlock(1, static_cast<std::int16_t>(k * 5), Noise(100, static_cast<unsigned>(k)), k == 0);
    blocks.insert(blocks.end(), block.begin(), block.end());
  }
  ByteString clusters;
  for (std::uint64_t k = 0; k < kBlocks; k += blocksPerCluster) {
    const ByteString cluster = Cluster(from + k * 5, blocks);
    clusters.insert(clusters.end(), cluster.begin(), cluster.end());
  }
  return FileOf(clusters);
}

TEST(ClusterSearch, TakesFewReadsAndTheIndexOfSmallBlocksTakesLargeOnes) {
  for (const std::uint64_t blocksPerCluster : {1000U, 5U}) {
    const ByteString bytes = SmallBlocks(blocksPerCluster);
    const auto before = static_cast<std::int64_t>(5000000000 - blocksPerCluster * 50000);  // one entry
    Opened searched(bytes, {});
    const std::int64_t opening = searched.Reads();
    EXPECT_EQ(searched.FramesFrom(5000000000).front().start, before);
    EXPECT_LE(searched.Reads() - opening, 60);
    EXPECT_FALSE(searched.IsIndexed());
    // The same place is known now.
    const std::int64_t first = searched.Reads();
    EXPECT_EQ(searched.FramesFrom(5000010000).front().start, before);
    EXPECT_LE(searched.Reads() - first, 6);

    Opened whole(bytes, {});
    whole.Scanner().BuildIndex();
    EXPECT_EQ(whole.Scanner().Index().size(), 200000 / blocksPerCluster);
    EXPECT_LE(whole.Reads() - opening, static_cast<std::int64_t>(bytes.size() / (512 * 1024)) + 40);
  }
}

TEST(ClusterSearch, NothingOfOneFileIsKnownOfTheNext) {
  const ByteString second = SmallBlocks(1000, 200000);  // milliseconds
  Opened file(SmallBlocks(1000, 100000), {});           // with its Clusters at the same positions
  EXPECT_FALSE(file.FramesFrom(5000000000).empty());
  file.Reopen(second);
  EXPECT_TRUE(IsSame(file.FramesFrom(6000000000), Opened(second, {}).FramesFrom(6000000000)));
}

TEST(ClusterSearch, PendingEventEndsItAtOnceAndItIsTriedAgain) {
  const ByteString bytes = SmallBlocks(1000);
  constexpr std::uint64_t kPlace = 5000000000;
  const auto frames = Opened(bytes, {}).FramesFrom(kPlace);
  for (std::int64_t polls = 0;; ++polls) {
    Opened file(bytes, {});
    if (!file.FramesFrom(kPlace, polls).empty()) break;
    EXPECT_TRUE(file.WasInterrupted());
    EXPECT_TRUE(IsSame(file.FramesFrom(kPlace), frames));
    ASSERT_LT(polls, 100) << "it does not come to an end";
  }
}

}  // namespace
}  // namespace tarvex::test
