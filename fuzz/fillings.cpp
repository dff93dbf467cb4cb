// See fillings.h.
#include "fuzz/fillings.h"

#include <functional>
#include <vector>

#include "fuzz/mutator.h"

namespace tarvex::fuzz {

using namespace test;  // NOLINT(google-build-using-namespace): the writer's vocabulary

namespace {

constexpr std::uint32_t kSilentTracks = 0x5854, kPreviousSize = 0xAB, kUnknown = 0x4444;

ByteString Empty(std::uint32_t element) { return Element(element, {}); }

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

struct Content {
  std::string name;
  std::function<ByteString(std::size_t size)> make;
};

Content Of(std::string name, ByteString part) {
  return {std::move(name), [part = std::move(part)](std::size_t size) { return Repeat(part, size / part.size()); }};
}

/// One element around all of it.
Content In(const char* name, std::uint32_t element, ByteString part) {
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

ByteString Group(const ByteString& more = {}) {
  return Element(id::kBlockGroup, Join({Element(id::kBlock, BlockData(1, 0, 0, {})), more}));
}

ByteString Atom(std::string_view name) {
  return Element(id::kChapterAtom, Element(id::kChapterDisplay, Text(id::kChapterString, name)));
}

std::vector<Content> MakeContents() {
  const ByteString positions =
      Element(id::kCueTrackPositions, Join({Unsigned(id::kCueTrack, 1), Unsigned(id::kCueClusterPosition, 0)}));
  const ByteString encodings =
      Element(id::kContentEncodings, Element(id::kContentEncoding, Empty(id::kContentCompression)));
  std::vector<Content> all = {
      {"Noise", [](std::size_t size) { return Noise(size, 3); }},
      {"NestedTags", [](std::size_t size) { return Nested(id::kTags, size); }},
      {"NestedAtoms", [](std::size_t size) { return Nested(id::kChapterAtom, size); }},
      Of("Zeros", {0}),
      Of("Ones", {0xFF}),
      Of("VoidsOfOneByte", {id::kVoid, 0x81, 0}),
      Of("Checksums", Element(id::kCrc32, {1, 2, 3, 4})),
      Of("ClustersOfOneBlock", Cluster(0, SimpleBlock(1, 0, {}))),
      Of("Blocks", SimpleBlock(1, 0, {})),
      Of("BlocksOfOneByte", SimpleBlock(1, 0, {7})),
      Of("LacesOfNothing",
         Element(id::kSimpleBlock, BlockData(1, 0, static_cast<std::uint8_t>(Lacing::kFixed), {0xFF}))),
      Of("Groups", Group()),
      Of("GroupsWithDuration", Group(Unsigned(id::kBlockDuration, 1))),
      In("GroupOfBlocks", id::kBlockGroup, Element(id::kBlock, BlockData(1, 0, 0, {}))),
      In("GroupOfReferences", id::kBlockGroup, Empty(id::kReferenceBlock)),
      In("SilentTrackNumbers", kSilentTracks, Unsigned(0x58D7, 1)),
      In("OneBlock", id::kSimpleBlock, {0x81, 0, 0, 0x80}),
      Of("SmallEntries", Element(id::kTrackEntry, Unsigned(id::kTrackNumber, 1))),
      Of("WholeEntries", TrackEntry(1, 2, "A_AC3")),
      Of("EntriesWithEncodings", Element(id::kTrackEntry, encodings)),
      Of("EncodingsElements", encodings),
      In("Encodings", id::kContentEncodings, Empty(id::kContentEncoding)),
      In("LongName", id::kTrackName, {'x'}),
      In("LongCodecId", id::kCodecId, {'x'}),
      In("LongPrivate", id::kCodecPrivate, {0}),
      Of("Privates", Element(id::kCodecPrivate, Zeros(100))),
      Of("Points", Element(id::kCuePoint, Join({Unsigned(id::kCueTime, 1), positions}))),
      Of("PointsOfNothing", Element(id::kCuePoint, Empty(id::kCueTrackPositions))),
      Of("Positions", positions),
      Of("NamedEditions", Element(id::kEditionEntry, Atom("x"))),
      Of("NamedAtoms", Atom("x")),
      Of("AtomsWithLongNames", Atom(std::string(60000, 'x'))),
      In("LongDisplay", id::kChapterDisplay, Text(id::kChapterString, "x")),
  };
  // Of 256 frames of one byte; sizes but for the last, in EBML's lacing as differences from the one before.
  const std::pair<Lacing, ByteString> laces[] = {
      {Lacing::kXiph, Repeat({1}, 255)}, {Lacing::kFixed, {}}, {Lacing::kEbml, Join({{0x81}, Repeat({0xBF}, 254)})}};
  for (const auto& [lacing, sizes] : laces) {
    const ByteString lace = Join({{255}, sizes, Repeat({7}, 256)});
    const auto flags = static_cast<std::uint8_t>(lacing);
    all.push_back(Of("Laces" + std::to_string(flags), Element(id::kSimpleBlock, BlockData(1, 0, flags, lace))));
  }
  std::vector<std::uint32_t> elements = {id::kVoid,        id::kCrc32,     kUnknown,
                                         id::kSimpleBlock, id::kTimecode,  kPreviousSize,
                                         id::kTrackNumber, id::kTrackName, id::kCueTime};
  elements.insert(elements.end(), MasterIds().begin(), MasterIds().end());
  for (const std::uint32_t element : elements) {
    all.push_back(Of("Empty" + std::to_string(element), Empty(element)));
    all.push_back(Of("Open" + std::to_string(element), ElementOfUnknownSize(element, {})));
  }
  return all;
}

const std::vector<Content>& Contents() {
  static const std::vector<Content> contents = MakeContents();
  return contents;
}

}  // namespace

std::size_t FillingCount() { return std::size(kPlaces) * Contents().size(); }

ByteString MakeFilling(std::size_t index, std::size_t size) {
  return kPlaces[index / Contents().size()].file(Contents()[index % Contents().size()].make(size));
}

std::string FillingName(std::size_t index) {
  return kPlaces[index / Contents().size()].name + Contents()[index % Contents().size()].name;
}

}  // namespace tarvex::fuzz
