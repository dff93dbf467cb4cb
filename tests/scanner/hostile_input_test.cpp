// Streams that ask for too much: every operation has to end, in memory and steps that follow the bytes
// that are there. The limit is in reads and bytes, not in time.
#include <gtest/gtest.h>

#include <random>

#include "framework/message_error.h"
#include "scanner/read_ahead_reader.h"
#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

constexpr std::size_t kMegabyte = 1024 * 1024;

/// Opens, indexes and delivers through the reading that the filter uses; MessageErrors are fine.
void ScanWhole(const ByteString& bytes) {
  MemoryReader reader(bytes);
  const auto readAhead = MakeCom<CReadAheadReader>(&reader);
  RecordingCallback callback;
  CEbmlScanner scanner;
  scanner.SetCallback(&callback);
  static_cast<void>(MessageOf([&] {
    scanner.CanProcess(readAhead.Get());
    scanner.BuildIndex();
    scanner.SetStartTime(1);
    scanner.Process();
    scanner.SetStartTime(0);
    scanner.Process();
  }));
  EXPECT_LE(reader.largestRead, static_cast<LONG>(std::max<std::size_t>(bytes.size() + 4096, kMegabyte)));
  // A few passes over the stream, not one for each of its bytes.
  EXPECT_LT(static_cast<std::size_t>(reader.reads), 2000 + bytes.size() / 8);
}

/// As level-1 content, inside a Cluster of known and unknown size, and in front of the Segment.
void ScanEverywhere(const ByteString& content) {
  ScanWhole(FileOf(content));
  ScanWhole(FileOf(Cluster(0, content)));
  ScanWhole(FileOf(ElementOfUnknownSize(id::kCluster, content)));
  ScanWhole(Join({EbmlHead(), content, Element(id::kSegment, Headers())}));
  ScanWhole(MatroskaFile(content));
}

TEST(HostileInput, LongRunsOfNothing) {
  ScanEverywhere(Zeros(kMegabyte));
  ScanEverywhere(ByteString(kMegabyte, 0xFF));
  ScanEverywhere(ByteString(kMegabyte, 0x1F));
  ScanEverywhere(Noise(kMegabyte, 1));
}

TEST(HostileInput, VoidsLargeSmallAndBroken) {
  ScanEverywhere(Repeat({id::kVoid, 0x80}, kMegabyte / 2));
  ScanEverywhere(Element(id::kVoid, Zeros(kMegabyte)));
  ScanEverywhere(Element(id::kVoid, Repeat({id::kVoid, 0x8F}, kMegabyte)));
  ScanEverywhere(ByteString(kMegabyte, id::kVoid));
}

// Each of them sends libebml looking, and a quadratic walk would look at the zeros each time.
TEST(HostileInput, ManyBrokenHeadsInFrontOfZeros) {
  const ByteString tooLarge = Join({Id(id::kTags), Vint(std::uint64_t{1} << 40, 8)});
  ScanEverywhere(Join({Repeat(tooLarge, 20000), Zeros(kMegabyte / 2), Element(0x4444, {})}));
  ScanEverywhere(Join({Repeat({0xBF, 0x81}, 100000), Zeros(kMegabyte / 2), Element(0x4444, {})}));
}

TEST(HostileInput, ManyEmptyElements) {
  ScanEverywhere(Repeat(Element(id::kTags, {}), 50000));
  ScanEverywhere(Repeat(Cluster(0, {}), 50000));
  ScanEverywhere(Repeat(ElementOfUnknownSize(id::kCluster, {}), 50000));
  ScanEverywhere(Repeat(Element(id::kBlockGroup, {}), 100000));
  ScanEverywhere(Repeat(Element(0x4444, {}), 100000));
}

TEST(HostileInput, SmallFilesThatDeclareGigabytes) {
  const std::uint32_t ids[] = {id::kSegment, id::kInfo,          id::kTracks,      id::kTrackEntry,  id::kCodecPrivate,
                               id::kCodecId, id::kTrackName,     id::kCluster,     id::kSimpleBlock, id::kBlockGroup,
                               id::kBlock,   id::kCues,          id::kChapters,    id::kVoid,        0x4444,
                               id::kTitle,   id::kChapterString, id::kTrackNumber, id::kEbml};
  for (const std::uint32_t element : ids) {
    for (const std::uint64_t size : {0x1000ULL, 0x7FFFFFF0ULL, 0xFFFFFF00ULL, 0xFFFFFFFFFFULL, 0xFFFFFFFFFFFFFEULL}) {
      const ByteString huge = ElementDeclaring(element, size, Noise(100, element));
      ScanEverywhere(huge);
      ScanWhole(
          MatroskaFile(ElementDeclaring(id::kTracks, size + 100, ElementDeclaring(id::kTrackEntry, size + 50, huge))));
      ScanWhole(FileOf(ElementDeclaring(id::kCluster, size + 50, huge)));
      ScanWhole(FileOf(ElementOfUnknownSize(id::kCluster, huge)));
    }
  }
}

TEST(HostileInput, NestingWithoutEnd) {
  ByteString nested;
  for (int depth = 0; depth < 3000; ++depth) nested = Element(id::kChapterAtom, nested);
  const ByteString unknown = Repeat(ElementOfUnknownSize(id::kChapterAtom, {}), 3000);
  for (const ByteString& atoms : {nested, unknown}) {
    const ByteString chapters = Element(id::kChapters, Element(id::kEditionEntry, atoms));
    ScanWhole(MatroskaFile(Join({SeekHeadFor(id::kChapters, SeekHeadFor(id::kChapters, 0).size()), chapters})));
    ScanWhole(FileOf(ElementOfUnknownSize(id::kChapters, ElementOfUnknownSize(id::kEditionEntry, atoms))));
  }
}

TEST(HostileInput, ElementsOfUnknownSizeInsideEachOther) {
  const std::uint32_t ids[] = {id::kCluster, id::kBlockGroup, id::kTracks, id::kTrackEntry, id::kCues, id::kCuePoint};
  std::mt19937 random(1);
  for (int count = 0; count < 300; ++count) {
    ByteString bytes;
    for (int part = 0; part < 40; ++part) {
      const std::uint32_t element = ids[random() % std::size(ids)];
      bytes =
          Join({bytes,
                random() % 2 == 0 ? ElementOfUnknownSize(element, {}) : Element(element, Noise(random() % 9, random())),
                random() % 3 == 0 ? SimpleBlock(1, 0, {1}) : ByteString{}});
    }
    ScanWhole(FileOf(bytes));
    ScanWhole(MatroskaFile(bytes));
  }
}

TEST(HostileInput, CuePointOfCountlessPositions) {
  const ByteString positions = Repeat(Element(id::kCueTrackPositions, {}), 100000);
  const ByteString references = Repeat(Element(id::kReferenceBlock, {}), 100000);
  const std::size_t cuesPosition = SeekHeadFor(id::kCues, 0).size();
  ScanWhole(MatroskaFile(
      Join({SeekHeadFor(id::kCues, cuesPosition), Element(id::kCues, Element(id::kCuePoint, positions)), Headers()})));
  ScanWhole(
      FileOf(Cluster(0, Element(id::kBlockGroup, Join({Element(id::kBlock, BlockData(1, 0, 0, {1})), references})))));
}

TEST(HostileInput, ManyTracksAreFoundByNumberEachTime) {
  ByteString entries;
  for (std::uint64_t number = 1; number <= 5000; ++number) entries = Join({entries, TrackEntry(number, 2, "A")});
  const ByteString blocks = Repeat(SimpleBlock(6000, 0, {1}), 50000);
  ScanWhole(MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, entries), Cluster(0, blocks)})));
}

TEST(HostileInput, FlippedBytesAnywhere) {
  const ByteString lace = LacedBlock(1, 3, Lacing::kEbml, {{1, 2}, {3}, {4, 5, 6}});
  const ByteString group =
      Element(id::kBlockGroup, Join({Element(id::kBlock, BlockData(1, 0, 0, {1})), Signed(id::kReferenceBlock, -1)}));
  const ByteString track =
      Headers(1, Join({Text(id::kTrackName, "name"), Element(id::kVideo, Unsigned(id::kPixelWidth, 1))}));
  const ByteString cluster = Cluster(5, Join({SimpleBlock(1, 0, Noise(30, 1)), lace, group}));
  const ByteString whole = FileOf(Join({cluster, cluster}), track);
  std::mt19937 random(2);
  for (int count = 0; count < 3000; ++count) {
    ByteString bytes = whole;
    for (auto flips = 1 + random() % 6; flips > 0; --flips) {
      bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
    }
    if (random() % 4 == 0) bytes.resize(random() % bytes.size());
    ScanWhole(bytes);
  }
}

}  // namespace
}  // namespace tarvex::test
