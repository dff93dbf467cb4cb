// Looking for elements byte by byte: compared with the plain walk, in which libebml looks at every byte
// and whatever is unknown or void is passed one byte further.
#include <ebml/EbmlCrc32.h>
#include <ebml/EbmlVoid.h>
#include <gtest/gtest.h>
#include <matroska/KaxSeekHead.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxSemantic.h>

#include <random>

#include "scanner/element_header.h"
#include "scanner/element_walker.h"
#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

struct Found {
  std::uint64_t position = 0;
  std::uint32_t id = 0;
  std::uint64_t after = 0;  // where the search left the stream

  friend bool operator==(const Found&, const Found&) = default;
};

std::ostream& operator<<(std::ostream& out, const Found& found) {
  return out << std::hex << found.id << std::dec << " at " << found.position << ", then " << found.after;
}

/// The walk in its plain form.
ElementPtr PlainNextChild(libebml::EbmlStream& stream, CAsyncCallback& source, const libebml::EbmlElement& parent) {
  const auto start = static_cast<std::int64_t>(source.getFilePointer());
  if (source.getFilePointer() >= source.Length()) return nullptr;
  for (;;) {
    const auto position = static_cast<std::int64_t>(source.getFilePointer());
    int upperLevel = 0;
    ElementPtr element(stream.FindNextElement(EBML_CONTEXT(&parent), upperLevel, 0xFFFFFFFF, true, 1));
    if (element && (element->IsDummy() || ElementAs<libebml::EbmlVoid>(element.get()) != nullptr)) {
      source.setFilePointer(position + 1);
    } else if (upperLevel == 0) {
      return element;
    } else if (upperLevel > 0) {
      source.setFilePointer(start);
      return nullptr;
    } else {
      element->SkipData(stream, EBML_CONTEXT(element));
    }
  }
}

template <class NextChild>
std::vector<Found> Walk(const ByteString& bytes, const libebml::EbmlElement& parent, NextChild nextChild) {
  MemoryReader reader(bytes);
  CAsyncCallback source;
  source.Attach(&reader);
  libebml::EbmlStream stream(source);
  std::vector<Found> all;
  while (const ElementPtr element = nextChild(stream, source, parent)) {
    all.push_back({element->GetElementPosition(), EBML_ID_VALUE(libebml::EbmlId(*element)), source.getFilePointer()});
    if (element->IsFiniteSize()) source.setFilePointer(static_cast<std::int64_t>(element->GetEndPosition()));
  }
  // Behind the end is all the same.
  all.push_back({0, 0, std::min(source.getFilePointer(), source.Length())});
  return all;
}

void ExpectPlainWalk(const ByteString& bytes, const libebml::EbmlElement& parent) {
  const auto plain = Walk(bytes, parent, PlainNextChild);
  const auto ours = Walk(bytes, parent, [](auto& stream, auto& source, auto& master) {
    return CElementWalker(stream, source).FindNextChild(master);
  });
  EXPECT_EQ(ours, plain);
}

/// Elements, pieces of elements, voids, zeros and noise in random order.
ByteString Jumble(std::mt19937& random) {
  const ByteString known[] = {Element(id::kInfo, Unsigned(id::kTimecodeScale, 1)),
                              Cluster(0, SimpleBlock(1, 0, Noise(20, 1))),
                              Element(id::kCrc32, {1, 2, 3, 4}),
                              Element(id::kSeek, Element(id::kSeekId, Id(id::kCues))),
                              ElementDeclaring(id::kTags, 0x100000000, {}),
                              ElementOfUnknownSize(id::kTags, {}),
                              Element(id::kVoid, Noise(random() % 30, random())),
                              Element(id::kVoid, Cluster(0, {})),
                              Element(0x4444, Noise(random() % 30, random())),
                              Element(id::kCrc32, {1, 2}),
                              Id(id::kCluster),
                              Zeros(random() % 30),
                              ByteString(random() % 30, 0xFF),
                              ByteString(random() % 30, 0x1F),
                              Noise(random() % 60, random())};
  ByteString bytes;
  for (int count = 0; count < 30; ++count) {
    const ByteString& part = known[random() % std::size(known)];
    bytes.insert(bytes.end(), part.begin(), part.end());
  }
  bytes.resize(bytes.size() - random() % std::min<std::size_t>(bytes.size(), 6));
  // libebml reads some bytes further than it looks, and gives up where the stream ends under that.
  return Join({bytes, Zeros(16)});
}

TEST(Resync, FindsWhatThePlainWalkFinds) {
  const libmatroska::KaxSegment segment;
  const libmatroska::KaxSeekHead seekHead;
  std::mt19937 random(1);
  for (int count = 0; count < 1500 && !HasFailure(); ++count) {
    const ByteString bytes = Jumble(random);
    ExpectPlainWalk(bytes, segment);
    ExpectPlainWalk(bytes, seekHead);
  }
}

/// What a Cluster holds, one line for each element below it, without what nobody keeps.
std::string Outline(const libebml::EbmlMaster& master) {
  std::string lines;
  for (const libebml::EbmlElement* child : master) {
    const bool isGlobal =
        ElementAs<libebml::EbmlVoid>(child) != nullptr || ElementAs<libebml::EbmlCrc32>(child) != nullptr;
    if (child->IsDummy() || isGlobal) continue;
    lines += std::to_string(child->GetElementPosition()) + "+" + std::to_string(child->GetSize()) + " ";
    if (child->IsMaster()) lines += "(" + Outline(static_cast<const libebml::EbmlMaster&>(*child)) + ")";
  }
  return lines;
}

template <class ReadCluster>
std::string OutlineRead(const ByteString& bytes, ReadCluster readCluster) {
  MemoryReader reader(bytes);
  CAsyncCallback source;
  source.Attach(&reader);
  libebml::EbmlStream stream(source);
  CElementWalker walker(stream, source);
  const libmatroska::KaxSegment segment;
  const auto cluster = walker.FindNextCluster(segment);
  readCluster(stream, walker, *cluster);
  return Outline(*cluster) + " then " + std::to_string(std::min(walker.Position(), source.Length()));
}

/// Blocks, groups and other elements between junk in which nothing known begins. `tooLarge` is one more.
ByteString ClusterJumble(std::mt19937& random, const ByteString& tooLarge) {
  const ByteString group = Join({Element(id::kBlock, BlockData(1, 0, 0, Noise(random() % 50, random()))),
                                 Element(id::kVoid, Zeros(random() % 9)), Signed(id::kReferenceBlock, -1)});
  const ByteString parts[] = {SimpleBlock(1, 0, Noise(random() % 200, random())),
                              Element(id::kBlockGroup, group),
                              Element(id::kBlockGroup, Join({group, Zeros(random() % 20)})),
                              Element(id::kVoid, SimpleBlock(1, 0, Noise(9, random()))),
                              Element(0x4444, SimpleBlock(1, 0, Noise(9, random()))),
                              ElementDeclaring(0x4444, 0x700000, {}),
                              tooLarge,
                              Element(id::kCrc32, {1, 2, 3, 4}),
                              Unsigned(id::kTimecode, random()),
                              Zeros(random() % 30),
                              ByteString(random() % 30, 0xFF)};
  ByteString bytes;
  for (int count = 0; count < 20; ++count) bytes = Join({bytes, parts[random() % std::size(parts)]});
  return Join({bytes, Zeros(16)});
}

TEST(Resync, ReadsOfAClusterWhatLibebmlReads) {
  std::mt19937 random(2);
  for (int count = 0; count < 1000 && !HasFailure(); ++count) {
    const bool known = random() % 2 == 0;
    // Without a parent's end libebml takes what the stream does not hold.
    const ByteString children =
        ClusterJumble(random, known ? ElementDeclaring(id::kSimpleBlock, 0x700000, {}) : ByteString{});
    const ByteString cluster = known ? Element(id::kCluster, children) : ElementOfUnknownSize(id::kCluster, children);
    const ByteString bytes = Join({cluster, Cluster(1, {}), Zeros(20)});
    const std::string plain = OutlineRead(bytes, [](auto& stream, auto& walker, auto& master) {
      int upperLevel = 0;
      libebml::EbmlElement* found = nullptr;
      master.Read(stream, EBML_CONTEXT(&master), upperLevel, found, true, libebml::SCOPE_ALL_DATA);
      const ElementPtr owner(upperLevel > 0 ? found : nullptr);  // else it is one of those that were kept
      if (owner) walker.MoveTo(owner->GetElementPosition());
    });
    const std::string ours =
        OutlineRead(bytes, [](auto& /*stream*/, auto& walker, auto& master) { walker.ReadMaster(master); });
    EXPECT_EQ(ours, plain);
  }
}

TEST(Resync, ElementsBelongingFurtherUpAreLeftInPlace) {
  const libmatroska::KaxSegment segment;
  ExpectPlainWalk(Join({Noise(20, 1), Element(id::kSegment, Element(id::kTags, {}))}), segment);
  const libmatroska::KaxSeekHead seekHead;
  ExpectPlainWalk(Join({Element(id::kSeek, {}), Zeros(3), Element(id::kTags, {})}), seekHead);
}

TEST(Resync, ElementInsideAVoidIsFound) {
  OpenFile file(FileOf(Element(id::kVoid, Cluster(3, SimpleBlock(1, 0, {1})))));
  file.Process();
  EXPECT_EQ(file.StartTimes(), (std::vector<std::int64_t>{30000}));
}

TEST(Resync, ClustersBehindJunkAreFound) {
  OpenFile file(
      FileOf(Join({Noise(300, 5), Cluster(1, SimpleBlock(1, 0, {1})), Zeros(1000), Cluster(2, SimpleBlock(1, 0, {1})),
                   ByteString(1000, 0xFF), Cluster(3, SimpleBlock(1, 0, {1}))})));
  file.Process();
  EXPECT_EQ(file.StartTimes(), (std::vector<std::int64_t>{10000, 20000, 30000}));
}

TEST(Resync, SecondSegmentEndsTheFirst) {
  const ByteString one = FileOf(Cluster(1, SimpleBlock(1, 0, {1})));
  OpenFile file(Join({one, one}));
  file.Process();
  EXPECT_EQ(file.callback.frames.size(), 1U);
}

TEST(ElementHeader, IsReadInAllItsLengthsAndNeverPastItsEnd) {
  for (unsigned length = 1; length <= 8; ++length) {
    const ByteString bytes = Join({Id(id::kCluster), Vint(100, length)});
    const auto header = ParseElementHeader(bytes);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->id, id::kCluster);
    EXPECT_EQ(header->size, 100U);
    EXPECT_EQ(header->Length(), 4 + length);
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) EXPECT_FALSE(ParseElementHeader(std::span(bytes).first(cut)));
  }
  EXPECT_FALSE(ParseElementHeader(ElementOfUnknownSize(id::kCluster, {}))->sizeKnown);
  EXPECT_FALSE(ParseElementHeader(ByteString{0x08, 0x81, 0x81, 0x81, 0x81}));
  EXPECT_FALSE(ParseElementHeader(Join({{0xEC}, Zeros(9)})));
}

}  // namespace
}  // namespace tarvex::test
