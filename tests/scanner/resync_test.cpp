// Looking for elements byte by byte: compared with the plain walk, in which libebml looks at every byte
// and whatever is unknown or void is passed one byte further.
#include <ebml/EbmlCrc32.h>
#include <ebml/EbmlVoid.h>
#include <gtest/gtest.h>
#include <matroska/KaxSeekHead.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxSemantic.h>

#include <random>

#include "scanner/elements/element_header.h"
#include "scanner/elements/element_walker.h"
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

}  // namespace
}  // namespace tarvex::test
