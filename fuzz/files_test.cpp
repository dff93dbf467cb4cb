// Files that nobody wrote: those of a corpus cut short and changed at random, and files filled with one thing. Reading
// and playing them ends, without a report of the sanitizers, in bounded memory, with work that follows the size.
// TARVEX_LONG=1 takes every cut and 10,000 mutations of each file; TARVEX_SEED makes others of them;
// TARVEX_FILLING_MIB=64 makes the fillings that large.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <span>

#include "fuzz/cases.h"
#include "fuzz/fillings.h"
#include "fuzz/heap.h"
#include "fuzz/mutator.h"
#include "fuzz/scan.h"
#include "fuzz/targets.h"
#include "fuzz/watch.h"
#include "scanner/limits.h"
#include "tests/corpus/manifest.h"
#include "tests/support/memory_reader.h"
#include "tests/support/source_filter.h"
#include "tests/support/test_system.h"

namespace tarvex::fuzz {
namespace {

using Bytes = Mutator::Bytes;
using limits::kMebibyte;

struct Cost {
  std::int64_t left, peak;  ///< bytes, at the end and at most
  std::uint64_t allocations;
  std::int64_t reads;  ///< of the reader below
};

Cost CostOf(Bytes file) {
  MemoryReader reader(std::move(file));
  const HeapCount heap;
  ScanStream(reader, ScanWhole);
  return {heap.Now(), heap.Peak(), heap.Allocations(), reader.reads};
}

class DamagedFile : public testing::TestWithParam<std::size_t> {
 protected:
  // One inflated frame of the largest size that can be delivered, what is read ahead, and for what the file holds its
  // elements as objects, large for a few bytes.
  void Read(Bytes bytes, const std::string& what) {
    const Watched call(m_file.name + ": " + what);
    const auto most = 12 * kMebibyte + 32 * static_cast<std::int64_t>(bytes.size());
    Cost cost = CostOf(bytes);
    if (cost.left != 0) cost = CostOf(bytes);  // some things are made once in a program
    ASSERT_EQ(cost.left, 0) << what;
    ASSERT_LE(cost.peak, most) << what;
  }
  void Play(Bytes bytes, std::uint32_t seed) {
    const Watched call(m_file.name + ": played, mutation " + std::to_string(seed));
    const auto pins = static_cast<std::uint8_t>(0x40 + seed % 2);  // all or one of each kind
    bytes.insert(bytes.end(), {pins, 0x60, 0xC0, 0x60, 0x20, 0x90, 0x60, 0x00});
    FuzzFilter(bytes);
  }

  const CorpusFile& m_file = Corpus()[GetParam()];
  const Mutator m_mutator{ReadWholeFile(m_file.path)};
  const std::uint32_t m_seed = FromEnvironment("TARVEX_SEED", 1) + static_cast<std::uint32_t>(GetParam()) * 10000;
};

TEST_P(DamagedFile, CutAnywhereIsReadToItsEnd) {
  std::mt19937 random(m_seed);
  const Bytes& whole = m_mutator.Whole();
  for (std::size_t k = 0; k < Many(30, 66000) && !HasFailure(); ++k) {
    const std::size_t at = Many(0, 1) != 0 && k < 65000 ? k : random() % (whole.size() + 1);
    const auto bytes = std::span(whole).first(std::min(at, whole.size()));
    if (at <= whole.size()) Read({bytes.begin(), bytes.end()}, "cut at " + std::to_string(at));
  }
}

TEST_P(DamagedFile, MutatedIsReadAndPlayedToItsEnd) {
  for (std::uint32_t k = 0; k < Many(30, 10000) && !HasFailure(); ++k) {
    const Bytes bytes = m_mutator.Mutated(m_seed + k);
    Read(bytes, "mutation " + std::to_string(m_seed + k));
    if (k < Many(1, 100)) Play(bytes, m_seed + k);
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, DamagedFile, testing::Range<std::size_t>(0, Corpus().size()), [](const auto& file) {
  return kCaseName(testing::TestParamInfo(Corpus()[file.param], file.index));
});

TEST(Fillings, CostBoundedMemoryAndWorkThatFollowsTheSize) {
  constexpr int kFactor = 4;
  const std::size_t mebibytes = FromEnvironment("TARVEX_FILLING_MIB", 0);
  const std::size_t large = mebibytes != 0 ? mebibytes << 20 : std::size_t{1} << (IsInstrumented() ? 16 : 17);
  for (const auto& [name, make] : MakeFillings()) {
    SCOPED_TRACE(name);
    const Watched call(name);
    const Cost one = CostOf(make(large / kFactor));
    const Cost four = CostOf(make(large));
    // Twice as much as proportion, and what is done once.
    EXPECT_LE(four.reads, 2 * kFactor * one.reads + 30);
    EXPECT_LE(four.allocations, 2 * kFactor * one.allocations + 1000);
    EXPECT_LE(four.peak, 64 * kMebibyte + 3 * static_cast<std::int64_t>(large));
  }
}

}  // namespace
}  // namespace tarvex::fuzz
