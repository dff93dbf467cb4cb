// See fillings.h.
#include "fuzz/fillings.h"

#include <map>

#include "fuzz/mutator.h"
#include "tests/corpus/manifest.h"
#include "tests/support/source_filter.h"

namespace tarvex::fuzz {

using namespace test;  // NOLINT(google-build-using-namespace): the writer's vocabulary

namespace {

ByteString UsualHeaders() { return Join({Element(id::kInfo, {}), Element(id::kTracks, TrackEntry(1, 2, "A_AC3"))}); }

ByteString Behind(const ByteString& content) { return MatroskaFile(Join({UsualHeaders(), content})); }

ByteString InFront(const ByteString& content) {
  return Join({EbmlHead(), content, Element(id::kSegment, UsualHeaders())});
}

ByteString WithTracks(const ByteString& entries) {
  return MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, entries)}));
}

/// A file whose SeekHead leads to a first child of that kind.
ByteString Led(std::uint32_t element, const ByteString& content) {
  const std::size_t length = SeekHeadFor(element, 0).size();
  return MatroskaFile(Join({SeekHeadFor(element, length), Element(element, content), UsualHeaders()}));
}

ByteString InEdition(const ByteString& content) { return Led(id::kChapters, Element(id::kEditionEntry, content)); }

struct Place {
  const char* name;
  ByteString (*file)(const ByteString& content);
};
constexpr Place kPlaces[] = {
    {"Level1", Behind},
    {"Headers", MatroskaFile},
    {"Cluster", [](const ByteString& content) { return Behind(Element(id::kCluster, content)); }},
    {"UnknownCluster", [](const ByteString& content) { return Behind(ElementOfUnknownSize(id::kCluster, content)); }},
    {"Front", InFront},
    {"Tracks", WithTracks},
    {"Entry", [](const ByteString& content) { return WithTracks(Element(id::kTrackEntry, content)); }},
    {"Cues", [](const ByteString& content) { return Led(id::kCues, content); }},
    {"CuePoint", [](const ByteString& content) { return Led(id::kCues, Element(id::kCuePoint, content)); }},
    {"Chapters", [](const ByteString& content) { return Led(id::kChapters, content); }},
    {"Edition", InEdition},
    {"Atom", [](const ByteString& content) { return InEdition(Element(id::kChapterAtom, content)); }},
};

Filling Of(const std::string& name, ByteString part) {
  return {name, [part = std::move(part)](std::size_t size) { return Repeat(part, size / part.size()); }};
}

/// One element around all of it.
Filling In(const std::string& name, std::uint32_t element, ByteString part) {
  return {name, [=](std::size_t size) { return Element(element, Repeat(part, size / part.size())); }};
}

ByteString Nested(std::uint32_t element, std::size_t size) {
  // Sizes that fit, from the outside in, in heads of fixed length.
  const std::size_t head = Id(element).size() + 8;
  ByteString all;
  for (std::size_t left = size / head * head; left >= head; left -= head) {
    const ByteString one = Join({Id(element), Vint(left - head, 8)});
    all.insert(all.end(), one.begin(), one.end());
  }
  return all;
}

/// Of each kind of element that the corpus has the first that is small and not empty.
std::map<std::uint32_t, ByteString> ElementsOfTheCorpus() {
  constexpr std::uint64_t kLongest = 64;  // bytes
  std::map<std::uint32_t, ByteString> elements;
  for (const CorpusFile& file : Corpus()) {
    const Mutator parts(ReadWholeFile(file.path));
    for (const auto& element : parts.Elements()) {
      const auto& [kind, idLength, size, sizeLength, sizeKnown] = element.header;
      if (sizeKnown && size > 0 && size <= kLongest) elements.try_emplace(kind, parts.CopyOf(element));
    }
  }
  return elements;
}

// A lace of nothing, since the corpus has none of so many frames, and the block of a group, which is longer there.
std::vector<Filling> MakeContents() {
  const ByteString lace = BlockData(1, 0, static_cast<std::uint8_t>(Lacing::kFixed), {0xFF});
  const ByteString block = Element(id::kBlock, BlockData(1, 0, 0, {}));
  std::vector<Filling> all = {
      {"Noise", [](std::size_t size) { return Noise(size, 3); }},
      {"NestedTags", [](std::size_t size) { return Nested(id::kTags, size); }},
      {"NestedAtoms", [](std::size_t size) { return Nested(id::kChapterAtom, size); }},
      Of("Zeros", {0}),
      Of("Ones", {0xFF}),
      Of("ClustersOfOneBlock", Cluster(0, SimpleBlock(1, 0, {}))),
      Of("LacesOfNothing", Element(id::kSimpleBlock, lace)),
      Of("Groups", Element(id::kBlockGroup, block)),
      In("GroupOfBlocks", id::kBlockGroup, block),
      In("GroupOfReferences", id::kBlockGroup, Element(id::kReferenceBlock, {})),
      In("Encodings", id::kContentEncodings, Element(id::kContentEncoding, {})),
      Of("WholeEntries", TrackEntry(1, 2, "A_AC3")),
  };
  for (const auto& [kind, element] : ElementsOfTheCorpus()) {
    all.push_back(Of("Some" + std::to_string(kind), element));
    if (!MasterIds().contains(kind)) all.push_back(In("Long" + std::to_string(kind), kind, {'x'}));
  }
  for (const std::uint32_t kind : MasterIds()) {
    all.push_back(Of("Empty" + std::to_string(kind), Element(kind, {})));
    all.push_back(Of("Open" + std::to_string(kind), ElementOfUnknownSize(kind, {})));
  }
  return all;
}

}  // namespace

std::vector<Filling> MakeFillings() {
  std::vector<Filling> all;
  const std::vector<Filling> contents = MakeContents();
  for (const auto& [place, file] : kPlaces) {
    for (const auto& [name, make] : contents) {
      all.push_back({place + name, [file, make](std::size_t size) { return file(make(size)); }});
    }
  }
  return all;
}

}  // namespace tarvex::fuzz
