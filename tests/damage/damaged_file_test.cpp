// Every file cut short everywhere and damaged at random: reading ends, without a report of the sanitizers,
// in bounded memory. TARVEX_LONG=1 takes every cut and 10,000 mutations of each file instead of some.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "tests/damage/case_watch.h"
#include "tests/damage/corpus_files.h"
#include "tests/damage/damaged_bytes.h"
#include "tests/damage/heap_count.h"
#include "tests/damage/whole_scan.h"
#include "tests/support/memory_reader.h"
#include "tests/support/source_filter.h"

namespace tarvex::test {
namespace {

// What reading may allocate at once: one inflated frame of the largest size that can be delivered and the
// reading-ahead window, and for what the file holds its elements as objects, large for a few bytes.
constexpr std::int64_t kFixedMemory = 12 << 20;
constexpr std::int64_t kMemoryPerByte = 32;

constexpr std::size_t kEveryByteUpTo = 64 * 1024;
constexpr unsigned kRandomCuts = 1000;
constexpr unsigned kMutations = 10000;
constexpr unsigned kQuickCuts = 30;
constexpr unsigned kQuickMutations = 30;

std::vector<std::size_t> CutsOf(std::size_t size, std::mt19937& random) {
  std::vector<std::size_t> cuts;
  if (!IsLongRun()) {
    for (unsigned k = 0; k < kQuickCuts; ++k) cuts.push_back(random() % (size + 1));
    return cuts;
  }
  for (std::size_t at = 0; at <= std::min(size, kEveryByteUpTo); ++at) cuts.push_back(at);
  for (unsigned k = 0; k < kRandomCuts && size > kEveryByteUpTo; ++k) {
    cuts.push_back(kEveryByteUpTo + random() % (size - kEveryByteUpTo));
  }
  return cuts;
}

class DamagedFile : public testing::TestWithParam<std::size_t> {
 protected:
  void Try(std::vector<std::uint8_t> bytes, const char* kind, std::uint64_t number) {
    m_watch.Begin(m_file.name.c_str(), kind, number);
    const auto size = static_cast<std::int64_t>(bytes.size());
    MemoryReader reader(std::move(bytes));
    const auto left = [&] {
      const HeapCount heap;
      m_opened += ScanStream(reader, ScanWhole).opened ? 1 : 0;
      m_peak = heap.Peak();
      return heap.Now();
    };
    // Some things are made once in a program.
    ASSERT_TRUE(left() == 0 || left() == 0) << CaseWatch::Name();
    ASSERT_LE(m_peak, kFixedMemory + kMemoryPerByte * size) << CaseWatch::Name();
    ++m_cases;
    if (m_peak <= m_highest) return;
    m_highest = m_peak;
    m_highestCase = CaseWatch::Name();
  }

  void TearDown() override {
    m_watch.End();
    std::cout << m_file.name << ": " << m_cases << " cases, " << m_opened << " opened, at most " << m_highest
              << " bytes (" << m_highestCase << "), slowest " << m_watch.Slowest() << '\n';
  }

  const CorpusPath& m_file = CorpusPaths()[GetParam()];
  const DamagedBytes m_bytes{ReadWholeFile(m_file.path)};
  CaseWatch m_watch;
  std::int64_t m_peak = 0;
  std::int64_t m_highest = 0;
  std::string m_highestCase;
  std::uint64_t m_cases = 0;
  std::uint64_t m_opened = 0;
};

TEST_P(DamagedFile, CutAnywhereIsReadToItsEnd) {
  std::mt19937 random(FirstSeed());
  for (const std::size_t at : CutsOf(m_bytes.Whole().size(), random)) {
    Try(m_bytes.CutAt(at), "cut at", at);
    if (HasFatalFailure()) return;
  }
}

TEST_P(DamagedFile, MutatedIsReadToItsEnd) {
  const std::uint32_t first = FirstSeed() + static_cast<std::uint32_t>(GetParam()) * kMutations;
  for (unsigned k = 0; k < (IsLongRun() ? kMutations : kQuickMutations); ++k) {
    Try(m_bytes.Mutated(first + k), "mutation", first + k);
    if (HasFatalFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, DamagedFile, testing::Range<std::size_t>(0, CorpusPaths().size()),
                         [](const auto& file) { return TestNameOf(CorpusPaths()[file.param].name); });

}  // namespace
}  // namespace tarvex::test
