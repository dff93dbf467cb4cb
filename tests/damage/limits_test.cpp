// What a file may cost, in files written to cost as much as they can: what is read, what is left out as a whole and
// said once, and how much memory that takes. Fillings of every other kind are made by fuzz/.
#include <gtest/gtest.h>
#include <zlib.h>

#include "fuzz/heap.h"
#include "fuzz/scan.h"
#include "pins/limits.h"
#include "scanner/limits.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/log_capture.h"
#include "tests/support/memory_reader.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

using fuzz::HeapCount;
using limits::kMebibyte;

constexpr std::size_t kBlocks = limits::kIndexEntries + limits::kIndexEntries / 4;

ByteString FileOf(const ByteString& trackEntries, const ByteString& rest = {}) {
  return MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, trackEntries), rest}));
}
ByteString Sound(const ByteString& more = {}) { return TrackEntry(1, 2, "A_AC3", more); }
ByteString Private(std::size_t size) { return TrackEntry(7, 17, "S", Element(id::kCodecPrivate, Zeros(size))); }
ByteString Inflated(std::size_t zeros) {
  const ByteString plain = Zeros(zeros);
  uLongf size = compressBound(static_cast<uLong>(zeros));
  ByteString packed(size);
  EXPECT_EQ(compress(packed.data(), &size, plain.data(), static_cast<uLong>(zeros)), Z_OK);
  packed.resize(size);
  const ByteString encoding = Element(id::kContentEncoding, Element(id::kContentCompression, {}));
  return FileOf(Sound(Element(id::kContentEncodings, encoding)), Cluster(0, SimpleBlock(1, 0, packed)));
}
ByteString Chapters(const ByteString& atoms) {
  const ByteString chapters = Element(id::kChapters, Element(id::kEditionEntry, atoms));
  return MatroskaFile(Join({SeekHeadFor(id::kChapters, SeekHeadFor(id::kChapters, 0).size()), chapters}));
}
ByteString Atom(std::size_t nameLength) {
  return Element(id::kChapterAtom,
                 Element(id::kChapterDisplay, Text(id::kChapterString, std::string(nameLength, 'x'))));
}
ByteString Nested(int atoms) {
  ByteString nested;
  for (int depth = 0; depth < atoms; ++depth) nested = Element(id::kChapterAtom, nested);
  return nested;
}
ByteString Blocks(std::size_t perCluster) {
  return FileOf(Sound(), Repeat(Cluster(7, Repeat(SimpleBlock(1, 0, {}), perCluster)), kBlocks / perCluster));
}
ByteString Groups() {
  const ByteString group = Element(id::kBlockGroup, Element(id::kBlock, BlockData(1, 0, 0, Zeros(150))));
  return FileOf(Sound(), ElementOfUnknownSize(id::kCluster, Repeat(group, 120000)));
}

constexpr int kDeepest = limits::kNesting - 2;  // below Chapters and the edition
const struct {
  const char* name;
  ByteString (*make)();
  std::size_t tracks, chapters, indexEntries, frames;
  std::int64_t peak;        ///< MiB at most
  std::size_t leftOut = 0;  ///< how often that is said
  std::size_t largest = 0;  ///< bytes that the largest frame has at least
} kFiles[] = {
    {"all tracks", [] { return FileOf(Repeat(Sound(), limits::kTracks)); }, limits::kTracks, 0, 0, 0, 8},
    {"one more", [] { return FileOf(Repeat(Sound(), limits::kTracks + 1)); }, limits::kTracks, 0, 0, 0, 8},
    {"large tracks", [] { return FileOf(Repeat(Private(16 << 20), 3)); }, 3, 0, 0, 0, 245},
    {"too large tracks",
     [] {
       const ByteString flags = TrackEntry(3, 17, "S", Repeat(Unsigned(id::kFlagForced, 1), 200000));
       return FileOf(Join({Sound(), Private(limits::kTrackData), flags, Private(1)}));
     },
     2, 0, 0, 0, 64, 1},
    {"all chapters", [] { return Chapters(Repeat(Atom(1), limits::kChapters)); }, 0, limits::kChapters, 0, 0, 64},
    {"one more", [] { return Chapters(Repeat(Atom(1), limits::kChapters + 1)); }, 0, limits::kChapters, 0, 0, 64},
    {"10000 chapters", [] { return Chapters(Repeat(Atom(20), 10000)); }, 0, 10000, 0, 0, 8},
    {"chapters with long names", [] { return Chapters(Repeat(Atom(1 << 20), 30)); }, 0,
     limits::kChapterNames / (limits::kMemoryPerTextByte << 20), 0, 0, 64, 1},
    {"deepest", [] { return Chapters(Nested(kDeepest)); }, 0, kDeepest, 0, 0, 1},
    {"one deeper", [] { return Chapters(Nested(kDeepest + 1)); }, 0, kDeepest, 0, 0, 1},
    {"long index", [] { return Blocks(1024); }, 1, 0, kBlocks / 2, 2 * kBlocks, 48},
    {"long index of one Cluster", [] { return Blocks(kBlocks); }, 1, 0, kBlocks / 2, 2 * kBlocks, 48},
    {"countless groups", Groups, 1, 0, 120000, 240000, 16},
    {"largest sample", [] { return Inflated(limits::kLargestSample); }, 1, 0, 1, 2, 30, 0, limits::kLargestSample},
    {"bomb", [] { return Inflated(64 << 20); }, 1, 0, 1, 2, 30, 0, limits::kInflatedFrame},
};

TEST(Limits, WhatFitsIsReadWholeAndWhatDoesNotIsLeftOutWhole) {
  const auto splitter = CreateSplitter();  // for its log
  for (const auto& file : kFiles) {
    SCOPED_TRACE(file.name);
    LogCapture log(splitter.Get());
    MemoryReader reader(file.make());
    const HeapCount heap;
    const fuzz::ScanResult result = fuzz::ScanStream(reader, fuzz::ScanWhole);
    EXPECT_LE(heap.Peak(), file.peak * kMebibyte);
    EXPECT_EQ(result.tracks, file.tracks);
    EXPECT_EQ(result.chapters, file.chapters);
    EXPECT_EQ(result.indexEntries, file.indexEntries);
    EXPECT_EQ(result.frames, file.frames);
    EXPECT_GE(result.largestFrame, file.largest);
    EXPECT_LE(result.largestFrame, limits::kInflatedFrame + 16384) << "a piece of zlib's more at most";
    std::size_t leftOut = 0;
    const std::string texts = log.Joined();
    for (auto at = texts.find("left out"); at != std::string::npos; at = texts.find("left out", at + 1)) ++leftOut;
    EXPECT_EQ(leftOut, file.leftOut);
  }
}

struct Cost {
  std::int64_t peak;  ///< bytes
  std::uint64_t allocations;
};

/// Heap of the whole filter while a file plays, with a sink on every pin. The pins' rings are not of the heap.
Cost Playing(const ByteString& file) {
  const auto source = SourceFilter::FromBytes(file);
  TestGraph graph;
  const HeapCount heap;
  EXPECT_EQ(graph.Open(source.Get()), S_OK);
  EXPECT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
  // What they write down is not the filter's.
  for (const auto& sink : graph.Sinks()) sink->OnSample([&sink](IMediaSample*) { sink->Clear(); });
  EXPECT_TRUE(SUCCEEDED(graph.Run()));
  EXPECT_TRUE(graph.WaitForEnd());
  EXPECT_TRUE(SUCCEEDED(graph.Stop()));
  return {heap.Peak(), heap.Allocations()};
}

TEST(Limits, WholeFilterStaysBelowItsMemory) {
  constexpr std::int64_t kMany = 4 << 20;  // bytes, of one Cluster
  const ByteString picture = TrackEntry(
      2, 1, "V_VP8", Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)})));
  // No second key frame comes: all pins hold what they have.
  const ByteString later = Cluster(
      1, Join({Element(id::kSimpleBlock, BlockData(2, 1, 0, Zeros(kMany / 2))), SimpleBlock(1, 1, Zeros(kMany / 2))}));
  const ByteString held =
      FileOf(Join({picture, Sound()}), Join({Cluster(0, SimpleBlock(2, 0, {1})), Repeat(later, 32)}));
  const ByteString tiny = FileOf(Sound(), Element(id::kCluster, Repeat(SimpleBlock(1, 0, {}), kMany / 6)));
  for (const ByteString& file : {held, tiny}) EXPECT_LE(Playing(file).peak, 64 * kMebibyte + 3 * kMany);
  EXPECT_LE(Playing(FileOf(Repeat(Private(1000), limits::kTracks))).peak, 64 * kMebibyte);
}

// Objects of the samples that the ring can hold, and lists that keep their room, are all that grows.
TEST(Limits, FrameCostsNoAllocation) {
  constexpr std::size_t kSize = 3000;
  const auto allocations = [&](std::size_t frames) {
    return Playing(FileOf(Sound(), Repeat(Cluster(0, Repeat(SimpleBlock(1, 0, Noise(kSize, 1)), frames)), 100)))
        .allocations;
  };
  EXPECT_LE(allocations(250), allocations(50) + limits::kLargestSample / kSize + 1000);
}

}  // namespace
}  // namespace tarvex::test
