// Files filled with one thing each: opening, indexing and playing end, in bounded memory, and with work that
// follows the size. Work is counted, not timed: reads and allocations. TARVEX_FILLING_MIB=64 makes the files
// that large instead of small, and then opening and indexing may each take two seconds of the processor.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>

#include "framework/log.h"
#include "framework/text_conversion.h"
#include "pins/limits.h"
#include "scanner/limits.h"
#include "tests/bounds/fillings.h"
#include "tests/damage/heap_count.h"
#include "tests/damage/whole_scan.h"
#include "tests/support/deflated.h"
#include "tests/support/memory_reader.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

constexpr std::int64_t kMebibyte = limits::kMebibyte;
constexpr std::int64_t kMemory = 64 * kMebibyte;
constexpr std::int64_t kMemoryPerClusterByte = 3;
constexpr double kSeconds = 2;

/// MiB of the large form; 0: the small one.
std::size_t LargeSize() {
  const char* given = std::getenv("TARVEX_FILLING_MIB");  // NOLINT(concurrency-mt-unsafe): nobody sets it
  return given == nullptr ? 0 : static_cast<std::size_t>(std::strtoul(given, nullptr, 10));
}

double ProcessorSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Cost : ScanResult {
  std::int64_t peak = 0;    ///< bytes
  std::uint64_t reads = 0;  ///< of the reader below
  std::uint64_t allocations = 0;
  double openSeconds = 0;
  double indexSeconds = 0;
  double playSeconds = 0;
};

template <class Action>
double Timed(Action&& action) {
  const double begin = ProcessorSeconds();
  action();
  return ProcessorSeconds() - begin;
}

void Scan(MemoryReader& reader, Cost& cost, bool plays) {
  ScanResult& result = cost;
  const double scan = Timed([&] {
    result = ScanStream(reader, [&](CEbmlScanner& scanner) {
      cost.indexSeconds = Timed([&] { scanner.BuildIndex(); });
      if (plays) cost.playSeconds = Timed([&] { scanner.Process(); });
    });
  });
  cost.openSeconds = scan - cost.indexSeconds - (plays ? cost.playSeconds : 0);
}

Cost CostOf(ByteString file) {
  MemoryReader reader(std::move(file));
  Cost cost;
  const HeapCount heap;
  Scan(reader, cost, true);
  cost.peak = heap.Peak();
  cost.allocations = heap.Allocations();
  cost.reads = static_cast<std::uint64_t>(reader.reads);
  if (LargeSize() != 0) {
    const NoHeapCount timesAlone;
    Scan(reader, cost, false);
  }
  return cost;
}

class FilledWith : public testing::TestWithParam<std::size_t> {
 protected:
  static void ExpectProportion();
  static void ExpectToBeQuick(std::size_t size);
};

void FilledWith::ExpectProportion() {
  const std::size_t small = std::size_t{1} << (IsInstrumented() ? 16 : 18);
  constexpr std::size_t kFactor = 4;
  const Cost one = CostOf(MakeFilling(GetParam(), small).file);
  const Cost four = CostOf(MakeFilling(GetParam(), kFactor * small).file);
  // Twice as much as proportion, and what is done once. What is too large to be taken from its bytes may need an
  // object for each element, though nothing smaller does: of four bytes at least, or in a long index of one.
  const std::uint64_t smallest = four.indexEntries > limits::kPlainClusterEntries ? 1 : 4;
  const std::uint64_t allocations = std::max<std::uint64_t>(2 * kFactor * one.allocations, kFactor * small / smallest);
  EXPECT_LE(four.reads, 2 * kFactor * one.reads + 30);
  EXPECT_LE(four.allocations, allocations + 1000);
  EXPECT_LE(four.peak, kMemory + kMemoryPerClusterByte * static_cast<std::int64_t>(kFactor * small));
}

void FilledWith::ExpectToBeQuick(std::size_t size) {
  Filling filling = MakeFilling(GetParam(), size);
  const Cost cost = CostOf(std::move(filling.file));
  std::printf("%-34s open %.2f index %.2f play %.2f s, %lld MiB\n", filling.name.c_str(), cost.openSeconds,
              cost.indexSeconds, cost.playSeconds, static_cast<long long>(cost.peak / kMebibyte));
  EXPECT_LE(cost.peak, kMemory + kMemoryPerClusterByte * static_cast<std::int64_t>(filling.largestCluster));
  EXPECT_LE(cost.openSeconds, kSeconds);
  EXPECT_LE(cost.indexSeconds, kSeconds);
}

TEST_P(FilledWith, CostsBoundedMemoryAndWork) {
  if (LargeSize() == 0) {
    ExpectProportion();
  } else {
    ExpectToBeQuick(LargeSize() << 20);
  }
}

INSTANTIATE_TEST_SUITE_P(Bounds, FilledWith, testing::Range<std::size_t>(0, FillingCount()),
                         [](const auto& filling) { return FillingName(filling.param); });

ByteString FileOf(const ByteString& trackEntries, const ByteString& rest) {
  return MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, trackEntries), rest}));
}

TEST(Bounds, ManyTracksAreReadUpToTheLimit) {
  EXPECT_EQ(CostOf(FileOf(Repeat(TrackEntry(1, 2, "A"), limits::kTracks), {})).tracks, limits::kTracks);
  EXPECT_EQ(CostOf(FileOf(Repeat(TrackEntry(1, 2, "A"), limits::kTracks + 1), {})).tracks, limits::kTracks);
}

TEST(Bounds, ChaptersNestAsDeepAsTheLimitAndNoDeeper) {
  const auto chaptersOf = [](int atoms) {
    ByteString nested;
    for (int depth = 0; depth < atoms; ++depth) nested = Element(id::kChapterAtom, nested);
    const ByteString chapters = Element(id::kChapters, Element(id::kEditionEntry, nested));
    return CostOf(MatroskaFile(Join({SeekHeadFor(id::kChapters, SeekHeadFor(id::kChapters, 0).size()), chapters})))
        .chapters;
  };
  constexpr int kAtoms = limits::kNesting - 2;  // below Chapters and the edition
  EXPECT_EQ(chaptersOf(kAtoms), static_cast<std::uint64_t>(kAtoms));
  EXPECT_EQ(chaptersOf(kAtoms + 1), static_cast<std::uint64_t>(kAtoms));
}

ByteString FileOfChapters(const ByteString& atoms) {
  const ByteString chapters = Element(id::kChapters, Element(id::kEditionEntry, atoms));
  return MatroskaFile(Join({SeekHeadFor(id::kChapters, SeekHeadFor(id::kChapters, 0).size()), chapters}));
}

/// As muxers write one.
ByteString Atom(std::uint64_t number, std::string_view name) {
  constexpr std::uint32_t kUid = 0x73C4, kHidden = 0x98, kEnabled = 0x4598, kLanguage = 0x437C, kIetfLanguage = 0x437D;
  const ByteString display = Element(
      id::kChapterDisplay, Join({Text(id::kChapterString, name), Text(kLanguage, "eng"), Text(kIetfLanguage, "en")}));
  return Element(id::kChapterAtom, Join({Unsigned(kUid, ~number), Unsigned(id::kChapterTimeStart, number * 1000),
                                         Unsigned(id::kChapterTimeEnd, number * 1000 + 999), Unsigned(kHidden, 0),
                                         Unsigned(kEnabled, 1), display}));
}

/// How often what is said of too much memory is logged, from construction to destruction.
class LeftOutCount {
 public:
  LeftOutCount() {
    SetLogSink(
        [](void* self, const char* text) {
          if (std::strstr(text, "left out") != nullptr) ++static_cast<LeftOutCount*>(self)->count;
        },
        this);
  }
  ~LeftOutCount() { SetLogSink(nullptr, nullptr); }
  LeftOutCount(const LeftOutCount&) = delete;
  LeftOutCount& operator=(const LeftOutCount&) = delete;

  unsigned count = 0;
};

/// Opens the file and looks at what was read. The bytes that opening took at most.
std::int64_t Opened(const ByteString& file, const std::function<void(const CEbmlScanner&)>& look) {
  MemoryReader reader(file);
  const HeapCount heap;
  EXPECT_TRUE(ScanStream(reader, [&](CEbmlScanner& scanner) { look(scanner); }).opened);
  return heap.Peak();
}

TEST(Bounds, TenThousandChaptersAreReadWhole) {
  constexpr std::uint64_t kCount = 10000;
  ByteString flat;
  for (std::uint64_t k = 0; k < kCount; ++k) {
    const ByteString atom = Atom(k, "Chapter number " + std::to_string(k));
    flat.insert(flat.end(), atom.begin(), atom.end());
  }
  for (const ByteString& atoms : {flat, Element(id::kChapterAtom, flat)}) {
    const LeftOutCount leftOut;
    const std::int64_t peak = Opened(FileOfChapters(atoms), [&](const CEbmlScanner& scanner) {
      ASSERT_GE(scanner.Chapters().size(), kCount);
      for (std::uint64_t k = 0; k < kCount; ++k) {
        const ScannedChapter& chapter = scanner.Chapters()[static_cast<std::size_t>(k)];
        ASSERT_EQ(Utf8FromWide(chapter.name.View()), "Chapter number " + std::to_string(k));
        ASSERT_EQ(chapter.start, k * 10);
        ASSERT_EQ(chapter.end, k * 10 + 9);
      }
    });
    EXPECT_LE(peak, 8 * kMebibyte);
    EXPECT_EQ(leftOut.count, 0U);
  }
}

TEST(Bounds, ChaptersForWhichThereIsNoMemoryAreLeftOutWhole) {
  const std::string name(1 << 20, 'x');
  ByteString atoms = Repeat(Atom(1, name), 30);
  const LeftOutCount leftOut;
  Opened(FileOfChapters(atoms), [&](const CEbmlScanner& scanner) {
    EXPECT_GT(scanner.Chapters().size(), 1U);
    EXPECT_LT(scanner.Chapters().size(), 30U);
    for (const ScannedChapter& chapter : scanner.Chapters()) EXPECT_EQ(chapter.name.View().size(), name.size());
  });
  EXPECT_EQ(leftOut.count, 1U);
  EXPECT_EQ(CostOf(FileOfChapters(Repeat(Atom(1, "x"), limits::kChapters + 1))).chapters, limits::kChapters);
}

TEST(Bounds, RichTrackEntriesAreReadWhole) {
  const auto encodings =
      Element(id::kContentEncodings,
              Element(id::kContentEncoding, Element(id::kContentCompression, Unsigned(id::kContentCompAlgo, 3))));
  const auto entry = [&](std::size_t number, std::size_t codecData) {
    return TrackEntry(number, 17, "S_TEXT/ASS",
                      Join({Text(id::kTrackName, "Track " + std::to_string(number)), Text(id::kLanguage, "ger"),
                            Unsigned(id::kFlagForced, 1), Element(id::kCodecPrivate, Noise(codecData, 1)), encodings}));
  };
  const std::pair<std::size_t, std::size_t> cases[] = {{1000, 20000}, {60, 80000}, {3, std::size_t{16} << 20}};
  for (const auto& [count, codecData] : cases) {
    ByteString entries;
    for (std::size_t k = 1; k <= count; ++k) {
      const ByteString one = entry(k, codecData);
      entries.insert(entries.end(), one.begin(), one.end());
    }
    const LeftOutCount leftOut;
    const std::int64_t peak = Opened(FileOf(entries, {}), [&](const CEbmlScanner& scanner) {
      ASSERT_EQ(scanner.Tracks(), count);
      for (std::uint32_t k = 0; k < count; ++k) {
        ASSERT_EQ(scanner.TrackAt(k)->Binary("KaxCodecPrivate")->size(), codecData);
        ASSERT_NE(scanner.TrackAt(k)->Find("KaxContentCompAlgo"), nullptr);
      }
    });
    EXPECT_LE(peak, 5 * static_cast<std::int64_t>(entries.size()) + 4 * kMebibyte);
    EXPECT_EQ(leftOut.count, 0U);
  }
}

TEST(Bounds, TrackEntryThatIsTooLargeIsLeftOutWhole) {
  const auto data = static_cast<std::size_t>(limits::kTrackData);
  const ByteString entries =
      Join({TrackEntry(1, 2, "A_AC3"), TrackEntry(2, 17, "S", Element(id::kCodecPrivate, Zeros(data))),
            TrackEntry(3, 17, "S", Repeat(Unsigned(id::kFlagForced, 1), 200000)), TrackEntry(4, 17, "S")});
  const LeftOutCount leftOut;
  const std::int64_t peak = Opened(FileOf(entries, {}), [](const CEbmlScanner& scanner) {
    ASSERT_EQ(scanner.Tracks(), 2U);
    EXPECT_NE(scanner.TrackByNumber(1), nullptr);
    EXPECT_NE(scanner.TrackByNumber(4), nullptr);
  });
  EXPECT_LE(peak, kMemory);
  EXPECT_EQ(leftOut.count, 1U);
}

TEST(Bounds, LongIndexIsThinnedOutEvenly) {
  constexpr std::size_t kBlocks = limits::kIndexEntries + limits::kIndexEntries / 4;
  for (const std::size_t perCluster : {std::size_t{1024}, kBlocks}) {
    ByteString clusters;
    for (std::size_t k = 0; k < kBlocks / perCluster; ++k) {
      const ByteString cluster = Cluster(k, Repeat(SimpleBlock(1, 0, {}), perCluster));
      clusters.insert(clusters.end(), cluster.begin(), cluster.end());
    }
    const Cost cost = CostOf(FileOf(TrackEntry(1, 2, "A"), clusters));
    EXPECT_EQ(cost.frames, kBlocks);
    EXPECT_EQ(cost.indexEntries, kBlocks / 2);
    EXPECT_LE(cost.peak, 2 * limits::kEntryMemory);
  }
}

TEST(Bounds, ClusterOfCountlessBlocksIsDeliveredWhole) {
  constexpr std::size_t kBlocks = 120000;
  const ByteString timecode = Unsigned(id::kTimecode, 7);
  const ByteString frame = Noise(150, 1);
  for (const ByteString& block :
       {SimpleBlock(1, 0, frame), Element(id::kBlockGroup, Element(id::kBlock, BlockData(1, 0, 0, frame)))}) {
    const ByteString blocks = Join({timecode, Repeat(block, kBlocks)});
    for (const ByteString& cluster : {Element(id::kCluster, blocks), ElementOfUnknownSize(id::kCluster, blocks)}) {
      const Cost cost = CostOf(FileOf(TrackEntry(1, 2, "A"), cluster));
      EXPECT_EQ(cost.frames, kBlocks);
      EXPECT_LE(cost.peak, 16 * kMebibyte) << "what is read ahead, and less than the Cluster has";
    }
  }
}

TEST(Bounds, LacesOfEmptyFramesTakeNoMemoryEach) {
  const ByteString lace =
      Element(id::kSimpleBlock, BlockData(1, 0, kKeyFlag | static_cast<std::uint8_t>(Lacing::kFixed), {0xFF}));
  constexpr std::size_t kLaces = 4000;
  const Cost cost = CostOf(FileOf(TrackEntry(1, 2, "A"), Element(id::kCluster, Repeat(lace, kLaces))));
  EXPECT_EQ(cost.frames, kLaces * limits::kLaceFrames);
  EXPECT_EQ(cost.indexEntries, kLaces);
  EXPECT_LE(cost.peak, 2 * limits::kEntryMemory);
}

TEST(Bounds, InflatingEndsBehindWhatAPinCanDeliver) {
  const ByteString entry = TrackEntry(
      1, 2, "A", Element(id::kContentEncodings, Element(id::kContentEncoding, Element(id::kContentCompression, {}))));
  const auto playing = [&](std::size_t zeros) {
    return CostOf(FileOf(entry, Cluster(0, SimpleBlock(1, 0, Deflated(Zeros(zeros))))));
  };
  EXPECT_EQ(playing(limits::kLargestSample).largestFrame, limits::kLargestSample);
  const Cost bomb = playing(std::size_t{64} << 20);
  EXPECT_GT(bomb.largestFrame, limits::kLargestSample) << "it must be refused like any that is too large";
  EXPECT_LE(bomb.peak, 2 * static_cast<std::int64_t>(limits::kInflatedFrame));
}

TEST(Bounds, NothingIsAllocatedForWhatTheFileCannotHold) {
  const std::uint32_t ids[] = {id::kCodecPrivate, id::kCodecId,       id::kTrackName, id::kSimpleBlock,
                               id::kBlock,        id::kChapterString, id::kTitle,     id::kContentCompSettings};
  for (const std::uint32_t element : ids) {
    for (const std::uint64_t size : {0x10000000ULL, 0x7FFFFFFEULL, 0xFFFFFFFFULL, 0xFFFFFFFFFFULL}) {
      const ByteString huge = ElementDeclaring(element, size, Zeros(100));
      const ByteString entry = ElementDeclaring(id::kTrackEntry, size + 20, huge);
      EXPECT_LE(CostOf(FileOf(ElementDeclaring(id::kTracks, size + 40, entry), {})).peak, kMebibyte) << element;
      EXPECT_LE(CostOf(FileOf(TrackEntry(1, 2, "A"), ElementDeclaring(id::kCluster, size + 20, huge))).peak, kMebibyte)
          << element;
    }
  }
}

}  // namespace
}  // namespace tarvex::test
