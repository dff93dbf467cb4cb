// The targets below the filter: the scanner over the input as a file, or over a file that has a track of the input.
#include <algorithm>

#include "fuzz/scan.h"
#include "fuzz/targets.h"
#include "scanner/index/index_search.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/memory_reader.h"

namespace tarvex::fuzz {

namespace {

using namespace test;  // NOLINT: the writer's vocabulary

ByteString Copied(Input bytes) { return {bytes.begin(), bytes.end()}; }

void Scan(ByteString file, const std::function<void(CEbmlScanner&)>& use) {
  MemoryReader reader(std::move(file));
  volatile std::uint64_t used = ScanStream(reader, use).sum;
  static_cast<void>(used);
}

}  // namespace

void FuzzIndex(Input file) {
  Scan(Copied(file), [](CEbmlScanner& scanner) {
    scanner.SetSearchReach({.smallestFile = 6, .firstChunk = 256, .chunk = 1024, .closest = 256});
    for (const std::uint64_t time : {scanner.Duration() / 2 + 1, std::uint64_t{10000000}}) {
      scanner.SetStartTime(time);
      scanner.Process();
    }
    scanner.BuildIndex();
    for (const std::uint64_t time : {std::uint64_t{0}, std::uint64_t{1}, scanner.Duration(), ~std::uint64_t{0}}) {
      const std::int32_t entry = FindIndexEntry(scanner.Index(), time, scanner.Duration());
      if (entry != 0 && static_cast<std::size_t>(entry) >= scanner.Index().size()) __builtin_trap();
    }
  });
}

void FuzzDeliver(Input file) { Scan(Copied(file), ScanWhole); }

void FuzzTrack(Input trackAndFrame) {
  if (trackAndFrame.size() < 2) return;
  const Input rest = trackAndFrame.subspan(2);
  const std::size_t length = std::min<std::size_t>(trackAndFrame[0] << 8 | trackAndFrame[1], rest.size());
  const ByteString tracks = Element(id::kTracks, Element(id::kTrackEntry, Copied(rest.first(length))));
  const ByteString frame = SimpleBlock(1, 0, Copied(rest.subspan(length)));
  Scan(MatroskaFile(Join({Element(id::kInfo, {}), tracks, Cluster(0, frame)})), ScanWhole);
}

}  // namespace tarvex::fuzz
