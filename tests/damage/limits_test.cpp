// What a file may cost, in files written to cost as much as they can: what is read, what is left out as a whole and
// said once, and how much memory that takes. Fillings of every other kind are made by fuzz/.
#include <gtest/gtest.h>

#include "framework/text_conversion.h"
#include "fuzz/heap.h"
#include "fuzz/scan.h"
#include "scanner/limits.h"
#include "tests/support/deflated.h"
#include "tests/support/log_capture.h"
#include "tests/support/memory_reader.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

using fuzz::HeapCount;
using limits::kMebibyte;

ByteString FileOf(const ByteString& trackEntries, const ByteString& rest) {
  return MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, trackEntries), rest}));
}

ByteString FileOfChapters(const ByteString& atoms) {
  const ByteString chapters = Element(id::kChapters, Element(id::kEditionEntry, atoms));
  return MatroskaFile(Join({SeekHeadFor(id::kChapters, SeekHeadFor(id::kChapters, 0).size()), chapters}));
}

ByteString Atom(std::uint64_t number, const std::string& name) {
  return Element(id::kChapterAtom, Join({Unsigned(id::kChapterTimeStart, number * 1000),
                                         Unsigned(id::kChapterTimeEnd, number * 1000 + 999),
                                         Element(id::kChapterDisplay, Text(id::kChapterString, name))}));
}

ByteString Compression(const ByteString& children) {
  return Element(id::kContentEncodings, Element(id::kContentEncoding, Element(id::kContentCompression, children)));
}

struct Cost : fuzz::ScanResult {
  std::int64_t peak = 0;  ///< bytes
  std::size_t leftOut = 0;
};

void Nothing(CEbmlScanner& /*scanner*/) {}

Cost CostOf(const ByteString& file, const std::function<void(CEbmlScanner&)>& use = fuzz::ScanWhole) {
  const auto splitter = CreateSplitter();  // for its log
  LogCapture log(splitter.Get());
  MemoryReader reader(file);
  Cost cost;
  const HeapCount heap;
  static_cast<fuzz::ScanResult&>(cost) = fuzz::ScanStream(reader, use);
  cost.peak = heap.Peak();
  for (const std::string& text : log.Texts()) cost.leftOut += text.find("left out") != std::string::npos ? 1 : 0;
  return cost;
}

TEST(Limits, TracksChaptersAndTheirDepthAreReadUpToTheLimitAndNoFurther) {
  for (const std::size_t more : {0U, 1U}) {
    EXPECT_EQ(CostOf(FileOf(Repeat(TrackEntry(1, 2, "A"), limits::kTracks + more), {})).tracks, limits::kTracks);
    EXPECT_EQ(CostOf(FileOfChapters(Repeat(Atom(1, "x"), limits::kChapters + more)), Nothing).chapters,
              limits::kChapters);
    constexpr std::size_t kAtoms = limits::kNesting - 2;  // below Chapters and the edition
    ByteString nested;
    for (std::size_t depth = 0; depth < kAtoms + more; ++depth) nested = Element(id::kChapterAtom, nested);
    EXPECT_EQ(CostOf(FileOfChapters(nested)).chapters, kAtoms);
  }
}

TEST(Limits, WhatIsLargeAndFitsIsReadWhole) {
  constexpr std::uint64_t kChapters = 10000;
  ByteString atoms;
  for (std::uint64_t k = 0; k < kChapters; ++k) {
    const ByteString atom = Atom(k, "Chapter number " + std::to_string(k));
    atoms.insert(atoms.end(), atom.begin(), atom.end());
  }
  const Cost flat = CostOf(FileOfChapters(atoms), [kChapters](CEbmlScanner& scanner) {
    ASSERT_EQ(scanner.Chapters().size(), kChapters);
    for (std::uint64_t k = 0; k < kChapters; ++k) {
      const ScannedChapter& chapter = scanner.Chapters()[static_cast<std::size_t>(k)];
      ASSERT_EQ(Utf8FromWide(chapter.name.View()), "Chapter number " + std::to_string(k));
      ASSERT_EQ(chapter.start, k * 10);
    }
  });
  EXPECT_LE(flat.peak, 8 * kMebibyte);
  EXPECT_EQ(flat.leftOut, 0U);
  for (const auto& [count, bytes] : {std::pair(1000U, 20000U), {60U, 80000U}, {3U, 16U << 20U}}) {
    const ByteString entry = TrackEntry(7, 17, "S_TEXT/ASS", Element(id::kCodecPrivate, Noise(bytes, 1)));
    const Cost rich = CostOf(FileOf(Repeat(entry, count), {}), [&](CEbmlScanner& scanner) {
      ASSERT_EQ(scanner.Tracks(), count);
      for (std::uint32_t k = 0; k < count; ++k) {
        ASSERT_EQ(scanner.TrackAt(k)->Binary("KaxCodecPrivate")->size(), bytes);
      }
    });
    EXPECT_LE(rich.peak, 5 * static_cast<std::int64_t>(count * entry.size()) + 4 * kMebibyte);
    EXPECT_EQ(rich.leftOut, 0U);
  }
}

TEST(Limits, WhatIsTooLargeIsLeftOutWholeAndSaidOnce) {
  const std::string name(1 << 20, 'x');
  const Cost chapters = CostOf(FileOfChapters(Repeat(Atom(1, name), 30)), [&](CEbmlScanner& scanner) {
    for (const ScannedChapter& chapter : scanner.Chapters()) EXPECT_EQ(chapter.name.View().size(), name.size());
  });
  EXPECT_GT(chapters.chapters, 1U);
  EXPECT_LT(chapters.chapters, 30U);
  EXPECT_EQ(chapters.leftOut, 1U);

  const ByteString data = Element(id::kCodecPrivate, Zeros(static_cast<std::size_t>(limits::kTrackData)));
  const Cost tracks = CostOf(
      FileOf(Join({TrackEntry(1, 2, "A_AC3"), TrackEntry(2, 17, "S", data),
                   TrackEntry(3, 17, "S", Repeat(Unsigned(id::kFlagForced, 1), 200000)), TrackEntry(4, 17, "S")}),
             {}),
      [](CEbmlScanner& scanner) {
        EXPECT_EQ(scanner.Tracks(), 2U);
        EXPECT_TRUE(scanner.TrackByNumber(1) != nullptr && scanner.TrackByNumber(4) != nullptr);
      });
  EXPECT_LE(tracks.peak, 64 * kMebibyte);
  EXPECT_EQ(tracks.leftOut, 1U);
}

TEST(Limits, LongIndexIsThinnedOutEvenlyAndCountlessBlocksAreDelivered) {
  constexpr std::size_t kBlocks = limits::kIndexEntries + limits::kIndexEntries / 4;
  for (const std::size_t perCluster : {std::size_t{1024}, kBlocks}) {
    const ByteString cluster = Cluster(7, Repeat(SimpleBlock(1, 0, {}), perCluster));
    const Cost cost =
        CostOf(FileOf(TrackEntry(1, 2, "A"), Repeat(cluster, kBlocks / perCluster)), [&](CEbmlScanner& scanner) {
          scanner.Process();
          scanner.BuildIndex();
          ASSERT_EQ(scanner.Index().size(), kBlocks / 2);
          const std::uint64_t begin = scanner.Index().front().position;
          const std::uint64_t span = scanner.Index().back().position - begin;
          for (std::size_t k = 0; k < kBlocks / 2; k += 99991) {
            EXPECT_NEAR(static_cast<double>(scanner.Index()[k].position - begin),
                        static_cast<double>(span) * static_cast<double>(k) / (kBlocks / 2),
                        2.0 * static_cast<double>(cluster.size()));
          }
        });
    EXPECT_EQ(cost.frames, kBlocks);
    EXPECT_LE(cost.peak, 2 * limits::kEntryMemory);
  }
  const ByteString lace =
      Element(id::kSimpleBlock, BlockData(1, 0, kKeyFlag | static_cast<std::uint8_t>(Lacing::kFixed), {0xFF}));
  const Cost laces = CostOf(FileOf(TrackEntry(1, 2, "A"), Element(id::kCluster, Repeat(lace, 4000))),
                            [](CEbmlScanner& scanner) { scanner.Process(); });
  EXPECT_EQ(laces.frames, 4000 * limits::kLaceFrames);
  EXPECT_LE(laces.peak, 2 * limits::kEntryMemory);
}

TEST(Limits, NothingIsAllocatedForWhatTheFileDoesNotHold) {
  for (const std::uint32_t element : {id::kCodecPrivate, id::kTrackName, id::kSimpleBlock, id::kBlock,
                                      id::kChapterString, id::kContentCompSettings}) {
    for (const std::uint64_t size : {0x10000000ULL, 0x7FFFFFFEULL, 0xFFFFFFFFFFULL}) {
      const ByteString huge = ElementDeclaring(element, size, Zeros(100));
      const ByteString entry = ElementDeclaring(id::kTrackEntry, size + 20, huge);
      EXPECT_LE(CostOf(FileOf(ElementDeclaring(id::kTracks, size + 40, entry), {})).peak, kMebibyte) << element;
      EXPECT_LE(CostOf(FileOf(TrackEntry(1, 2, "A"), ElementDeclaring(id::kCluster, size + 20, huge))).peak, kMebibyte)
          << element;
    }
  }
  const auto inflated = [](std::size_t zeros) {
    return CostOf(
        FileOf(TrackEntry(1, 2, "A", Compression({})), Cluster(0, SimpleBlock(1, 0, Deflated(Zeros(zeros))))));
  };
  EXPECT_EQ(inflated(limits::kLargestSample).largestFrame, limits::kLargestSample);
  const Cost bomb = inflated(std::size_t{64} << 20);
  EXPECT_GT(bomb.largestFrame, limits::kLargestSample) << "it must be refused like any that is too large";
  EXPECT_LE(bomb.peak, 2 * static_cast<std::int64_t>(limits::kInflatedFrame));
}

/// Heap of the whole filter while a file plays, with a sink on every pin. The pins' rings are not of the heap.
struct Playing {
  explicit Playing(const ByteString& file, bool separatePins = true) {
    const auto source = CSourceFilter::FromBytes(file);
    TestGraph graph;
    EXPECT_EQ(graph.SeparatePins(separatePins), S_OK);
    const HeapCount heap;
    EXPECT_EQ(graph.Open(source.Get()), S_OK);
    EXPECT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
    // What they write down is not the filter's.
    for (const auto& sink : graph.Sinks()) sink->OnSample([&sink](IMediaSample*) { sink->Clear(); });
    const std::uint64_t before = heap.Allocations();
    EXPECT_TRUE(SUCCEEDED(graph.Run()));
    while (!graph.WaitForEnd(50) && !graph.WaitForEvent(EC_ERRORABORT, 1)) continue;
    allocations = heap.Allocations() - before;
    EXPECT_TRUE(SUCCEEDED(graph.Stop()));
    peak = heap.Peak();
  }
  std::uint64_t allocations = 0;
  std::int64_t peak = 0;  ///< bytes
};

TEST(Limits, WholeFilterStaysBelowItsMemory) {
  constexpr std::int64_t kMany = 4 << 20;  // bytes, of one Cluster
  const ByteString picture = TrackEntry(
      1, 1, "V_VP8", Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)})));
  const ByteString sound = TrackEntry(2, 2, "A_AC3");
  // No second key frame comes: all pins hold what they have.
  const ByteString later = Cluster(
      1, Join({Element(id::kSimpleBlock, BlockData(1, 1, 0, Zeros(kMany / 2))), SimpleBlock(2, 1, Zeros(kMany / 2))}));
  const ByteString held = FileOf(Join({picture, sound}), Join({Cluster(0, SimpleBlock(1, 0, {1})), Repeat(later, 32)}));
  const ByteString tiny = FileOf(sound, Element(id::kCluster, Repeat(SimpleBlock(2, 0, {}), kMany / 6)));
  ByteString tracks;
  for (std::uint64_t number = 1; number <= limits::kTracks; ++number) {
    const ByteString entry = TrackEntry(number, 2, "A_AC3", Element(id::kCodecPrivate, Zeros(1000)));
    tracks.insert(tracks.end(), entry.begin(), entry.end());
  }
  for (const ByteString& file : {held, tiny}) EXPECT_LE(Playing(file).peak, 64 * kMebibyte + 3 * kMany);
  EXPECT_LE(Playing(FileOf(tracks, Cluster(0, SimpleBlock(1, 0, {1}))), false).peak, 64 * kMebibyte);
}

// Objects of all the samples that the ring can hold, and lists that keep their room, are all that grows.
TEST(Limits, FrameCostsNoAllocation) {
  const ByteString frame = Noise(3000, 1);
  const ByteString stripped = Join({Unsigned(id::kContentCompAlgo, 3), Element(id::kContentCompSettings, {1, 2})});
  constexpr std::uint64_t kGrowth = limits::kLargestSample / 3000 + 1000;
  for (const auto& [encodings, packed] :
       {std::pair(ByteString(), frame), {Compression(stripped), frame}, {Compression({}), Deflated(frame)}}) {
    const auto allocations = [&](std::size_t frames) {
      const ByteString cluster = Cluster(0, Repeat(SimpleBlock(1, 0, packed), frames));
      return Playing(FileOf(TrackEntry(1, 2, "A_AC3", encodings), Repeat(cluster, 100))).allocations;
    };
    const std::uint64_t few = allocations(50);
    EXPECT_GT(few, 100U) << "nothing was counted";
    EXPECT_LE(allocations(250), few + kGrowth);
  }
}

}  // namespace
}  // namespace tarvex::test
