// Looking for elements byte by byte: compared with the plain walk, in which libebml looks at every byte
// and whatever is unknown or void is passed one byte further.
#include <ebml/EbmlCrc32.h>
#include <ebml/EbmlVoid.h>
#include <gtest/gtest.h>
#include <matroska/KaxSeekHead.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxSemantic.h>

#include "fuzz/cases.h"
#include "fuzz/mutator.h"
#include "scanner/elements/element_walker.h"
#include "tests/scanner/recording.h"
#include "tests/support/source_filter.h"

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

TEST(Resync, FindsWhatThePlainWalkFinds) {
  const libmatroska::KaxSegment segment;
  const libmatroska::KaxSeekHead seekHead;
  int walks = 0;
  for (const auto& file : fuzz::CorpusFiles()) {
    const ByteString whole = ReadWholeFile(file.path);
    if (whole.size() > 20000) continue;
    for (std::uint_fast32_t seed = 0; seed < 30; ++seed) {
      // libebml reads some bytes further than it looks, and gives up where the stream ends under that.
      const ByteString bytes = Join({fuzz::Mutator(whole).Mutated(seed), Zeros(16)});
      for (const libebml::EbmlElement* parent :
           std::initializer_list<const libebml::EbmlElement*>{&segment, &seekHead}) {
        const auto ours = Walk(bytes, *parent, [](auto& stream, auto& source, auto& master) {
          return ElementWalker(stream, source).FindNextChild(master);
        });
        ASSERT_EQ(ours, Walk(bytes, *parent, PlainNextChild)) << file.name << ", seed " << seed;
        ++walks;
      }
    }
  }
  EXPECT_GT(walks, 3000);
}

}  // namespace
}  // namespace tarvex::test
