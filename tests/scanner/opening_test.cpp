// Opening: what no file of the corpus can show. A failing reader, and times that no clock has.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

TEST(Opening, FailingReaderIsNamed) {
  const ByteString bytes = FileOf(Cluster(0, {}));
  for (std::int64_t read = 0; read < 20; ++read) {
    MemoryReader reader(bytes);
    reader.failingRead = read;
    CEbmlScanner scanner;
    EXPECT_EQ(MessageOf([&] { scanner.CanProcess(&reader); }),
              "<CAsyncCallback::read> failed to read input data using IAsyncReader::SyncRead method");
  }
}

TEST(Opening, DurationIsCutAndNonsenseCountsAsAbsent) {
  const struct {
    double ticks;
    std::uint64_t scale;
    std::uint64_t expected;
  } cases[] = {
      {5000.0, 1000000, 50000000},
      {0.99, 100, 0},
      {1e19, 100, 10000000000000000000U},
      {1e300, 1000000, std::numeric_limits<std::uint64_t>::max()},
      {std::nan(""), 1000000, 0},
      {std::numeric_limits<double>::infinity(), 1000000, 0},
      {-1.0, 1000000, 0},
      {5000.0, 0, 0},
  };
  for (const auto& [ticks, scale, expected] : cases) {
    const ByteString info = Join({Unsigned(id::kTimecodeScale, scale), Float(id::kDuration, ticks)});
    EXPECT_EQ(OpenFile(MatroskaFile(Element(id::kInfo, info))).scanner.Duration(), expected) << ticks << " " << scale;
  }
}

}  // namespace
}  // namespace tarvex::test
