// The scanner over the input as a file.
#include <initializer_list>
#include <vector>

#include "fuzz/scan.h"
#include "fuzz/targets.h"
#include "scanner/index/index_search.h"
#include "tests/support/memory_reader.h"

namespace tarvex::fuzz {

namespace {

void WithOpenFile(Input file, const std::function<void(CEbmlScanner&)>& use) {
  test::MemoryReader reader(std::vector<std::uint8_t>(file.begin(), file.end()));
  volatile std::uint64_t used = ScanStream(reader, use).sum;
  static_cast<void>(used);
}

}  // namespace

void FuzzOpen(Input file) {
  WithOpenFile(file, [](CEbmlScanner& scanner) {
    for (std::uint32_t track = 0; track < scanner.Tracks(); ++track) {
      scanner.DefaultFrameDuration(scanner.TrackAt(track)->Unsigned("KaxTrackNumber").value_or(0));
    }
    static_cast<void>(scanner.Duration());
  });
}

void FuzzIndex(Input file) {
  WithOpenFile(file, [](CEbmlScanner& scanner) {
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

void FuzzDeliver(Input file) {
  WithOpenFile(file, [](CEbmlScanner& scanner) {
    scanner.Process();
    scanner.SetStartTime(scanner.Duration() / 2 + 1);
    scanner.Process();
  });
}

}  // namespace tarvex::fuzz
