// The seek index: that of every file of a corpus against the manifest, when it is made, and where a start
// within it leads.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "scanner/index/index_search.h"
#include "tests/corpus/manifest.h"
#include "tests/scanner/recording.h"
#include "tests/support/digest.h"
#include "tests/support/source_filter.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

using nlohmann::json;
using Index = std::vector<SeekPoint>;

std::string LineOf(std::uint64_t position, std::int64_t time) {
  return std::to_string(position) + " " + std::to_string(time) + "\n";
}

void CompareIndex(const Index& index, const json& expected) {
  std::string lines;
  for (const SeekPoint& point : index) lines += LineOf(point.position, static_cast<std::int64_t>(point.time));
  if (!expected.contains("entries")) {
    Sha256 sum;
    sum.Add(lines);
    EXPECT_EQ(sum.Finish(), expected.at("sha256"));
    return;
  }
  std::string wanted;
  for (const json& entry : expected.at("entries")) wanted += LineOf(entry[0], entry[1]);
  EXPECT_EQ(lines, wanted);
}

TEST(SeekIndex, OfEveryFileIsWhatTheManifestSays) {
  for (const CorpusFile& corpus : Corpus()) {
    if (!corpus.entry.contains("tracks") || !corpus.Expect().contains("seek_index")) continue;
    SCOPED_TRACE(corpus.name);
    OpenFile file(ReadWholeFile(corpus.path));
    file.scanner.BuildIndex();
    CompareIndex(file.scanner.Index(), corpus.Expect().at("seek_index"));
  }
}

/// Three Clusters at 0, 10 and 20 s, each with a key frame and another.
ByteString ThreeClusters(std::uint64_t track = 1) {
  ByteString all;
  for (std::uint64_t time = 0; time <= 20000; time += 10000) {
    all = Join({all, Cluster(time, Join({SimpleBlock(track, 0, {1}), SimpleBlock(track, 40, {2}, false)}))});
  }
  return all;
}

TEST(SeekIndex, IsBuiltOnceAlsoWhenNothingCameOfIt) {
  for (const std::uint64_t track : {1U, 2U}) {
    OpenFile file(FileOf(ThreeClusters(track)));
    file.scanner.BuildIndex();
    const std::int64_t reads = file.reader.reads;
    file.scanner.BuildIndex();
    EXPECT_EQ(file.reader.reads, reads);
  }
}

TEST(SeekIndex, FailingReadOrPendingEventLeavesNoneAndItIsTriedAgain) {
  for (const bool fails : {true, false}) {
    OpenFile file(FileOf(ThreeClusters()));
    if (fails) file.reader.brokenFrom = file.reader.reportedLength - 3;
    if (!fails) file.callback.eventAfter = 1;
    file.scanner.BuildIndex();
    EXPECT_TRUE(file.scanner.Index().empty());
    file.reader.brokenFrom = -1;
    file.scanner.BuildIndex();
    EXPECT_EQ(file.scanner.Index().size(), 3U);
  }
}

TEST(IndexSearch, FindsTheLastEntryNotAfterTheTimeAndEndsInAnyIndex) {
  constexpr std::uint64_t kBeforeZero = ~std::uint64_t{19};
  const Index sorted = {{1, 0}, {2, 100000000}, {3, 200000000}};
  const Index unsorted = {{1, 50}, {2, 10}, {3, 40}, {4, 5}};
  const Index early = {{1, kBeforeZero}, {2, 30}};
  const struct {
    const Index& index;
    std::uint64_t time;
    std::uint64_t duration;
    int expected;
  } cases[] = {
      {sorted, 0, 300000000, 0},
      {sorted, 99999999, 0, 0},
      {sorted, 150000000, 300000000, 1},
      {sorted, 200000000, 210000000, 2},
      {sorted, 900000000, 300000000, 0},
      {sorted, 900000000, 0, 2},
      {unsorted, 45, 0, 0},
      {unsorted, 45, 60, 3},
      {early, 10, 0, 0},
  };
  for (const auto& [index, time, duration, expected] : cases) {
    EXPECT_EQ(FindIndexEntry(index, time, duration), expected) << index.size() << " " << time << " " << duration;
  }
}

}  // namespace
}  // namespace tarvex::test
