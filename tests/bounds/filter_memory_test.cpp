// The most memory that the whole filter takes while a file plays, with a sink on every pin: below 64 MiB and three
// times the largest Cluster. The pins' rings are not of the heap, and so come on top.
#include <gtest/gtest.h>

#include <atomic>
#include <iostream>

#include "scanner/limits.h"
#include "tests/damage/heap_count.h"
#include "tests/support/deflated.h"
#include "tests/support/movie.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

struct MemoryCase {
  const char* name;
  ByteString (*make)();
  std::int64_t largestCluster;  ///< bytes that are really there
  bool separatePins = true;
};

void PrintTo(const MemoryCase& one, std::ostream* out) { *out << one.name; }

constexpr std::int64_t kMany = 4 << 20;  // bytes, of one Cluster

ByteString FileOf(const ByteString& tracks, const ByteString& clusters) {
  return MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, tracks), clusters}));
}

ByteString SoundAnd(const ByteString& clusters) { return FileOf(TrackEntry(1, 2, "A_AC3"), clusters); }

ByteString Usual() {
  return MakeMovie({.videos = 1, .audios = 2, .frames = 300, .framesPerCluster = 10, .frameSize = 40000});
}

// No second key frame comes: all pins hold what they have.
ByteString Held() {
  const ByteString picture = TrackEntry(
      1, 1, "V_VP8", Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)})));
  const ByteString block = Element(id::kSimpleBlock, BlockData(1, 1, 0, Zeros(kMany / 2)));
  const ByteString more = Cluster(1, Join({block, SimpleBlock(2, 1, Zeros(kMany / 2))}));
  return FileOf(Join({picture, TrackEntry(2, 2, "A_AC3")}),
                Join({Cluster(0, SimpleBlock(1, 0, {1})), Repeat(more, 32)}));
}

ByteString TinyBlocks() { return SoundAnd(Element(id::kCluster, Repeat(SimpleBlock(1, 0, {}), kMany / 6))); }

ByteString TinyGroups() {
  const ByteString group = Element(id::kBlockGroup, Element(id::kBlock, BlockData(1, 0, 0, {1})));
  return SoundAnd(ElementOfUnknownSize(id::kCluster, Repeat(group, kMany / group.size())));
}

ByteString DeclaredBlocks() {
  constexpr std::uint64_t kHuge = 0x7FFFFFF0;
  ByteString clusters;
  for (const std::uint32_t kind : {id::kSimpleBlock, id::kBlock, id::kBlockGroup}) {
    const ByteString block = ElementDeclaring(kind, kHuge, Zeros(1000));
    clusters = Join({clusters, ElementDeclaring(id::kCluster, 2 * kHuge, Repeat(block, 100))});
  }
  return FileOf(Join({TrackEntry(1, 2, "A_AC3"), ElementDeclaring(id::kCodecPrivate, kHuge, {})}), clusters);
}

ByteString Bombs() {
  const ByteString packed = Deflated(Zeros(64 << 20));
  const ByteString zlib =
      Element(id::kContentEncodings, Element(id::kContentEncoding, Element(id::kContentCompression, {})));
  const ByteString tracks = Join({TrackEntry(1, 2, "A_AC3", zlib), TrackEntry(2, 2, "A_AC3", zlib)});
  const ByteString both = Join({SimpleBlock(1, 0, packed), SimpleBlock(2, 0, packed)});
  return FileOf(tracks, Repeat(Cluster(0, both), 10));
}

ByteString Tracks(std::size_t count) {
  ByteString tracks;
  ByteString blocks;
  for (std::uint64_t number = 1; number <= count; ++number) {
    tracks = Join({tracks, TrackEntry(number, 2, "A_AC3", Element(id::kCodecPrivate, Zeros(1000)))});
    blocks = Join({blocks, SimpleBlock(number, 0, Zeros(100))});
  }
  return FileOf(tracks, Repeat(Cluster(0, blocks), 10));
}

const MemoryCase kCases[] = {
    {"Usual", Usual, 3 * 10 * 40100},
    {"FramesHeldBack", Held, kMany + 100},
    {"CountlessBlocks", TinyBlocks, kMany},
    {"CountlessGroupsInNoSize", TinyGroups, kMany},
    {"BlocksThatAreNotThere", DeclaredBlocks, 100 * 1020},
    {"Bombs", Bombs, 1 << 18},
    {"ManyTracks", [] { return Tracks(limits::kTracks); }, 200 << 10, false},
    {"ManyPins", [] { return Tracks(30); }, 8 << 10},
};

class FilterMemory : public testing::TestWithParam<MemoryCase> {};

// A frame that is too large ends the pass with an error; that is an end as well.
TEST_P(FilterMemory, StaysBelowItsLimit) {
  const MemoryCase& one = GetParam();
  std::int64_t peak = 0;
  {
    const auto source = SourceFilter::FromBytes(one.make());
    TestGraph graph;
    ASSERT_EQ(graph.SeparatePins(one.separatePins), S_OK);
    const WholeHeapCount heap;
    ASSERT_EQ(graph.Open(source.Get()), S_OK);
    ASSERT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
    std::atomic<std::size_t> samples{0};
    for (const auto& sink : graph.Sinks()) {
      sink->OnSample([&samples, &sink](IMediaSample*) {
        ++samples;
        sink->Clear();  // what it writes down is not the filter's
      });
    }
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    EXPECT_TRUE(graph.WaitForEnd(kPatience / 20) || graph.WaitForEvent(EC_ERRORABORT, 1) || graph.WaitForEnd());
    LONGLONG start = 1;  // makes the index
    const auto seeking = QueryFor<IMediaSeeking>(graph.OutputPins().at(0).Get());
    EXPECT_EQ(seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning), S_OK);
    ASSERT_TRUE(SUCCEEDED(graph.Stop()));
    peak = heap.Peak();
    std::cout << one.name << ": " << samples << " samples, " << peak / limits::kMebibyte << " MiB\n";
  }
  EXPECT_LE(peak, 64 * limits::kMebibyte + 3 * one.largestCluster);
  EXPECT_TRUE(ModuleBecomesIdle());
}

INSTANTIATE_TEST_SUITE_P(Bounds, FilterMemory, testing::ValuesIn(kCases),
                         [](const auto& one) { return std::string(one.param.name); });

}  // namespace
}  // namespace tarvex::test
