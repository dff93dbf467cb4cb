// See fillings.h.
#include "tests/bounds/fillings.h"

#include <functional>

namespace tarvex::test {
namespace {

enum class Place : std::uint8_t {
  kLevel1,          // behind the headers
  kHeaders,         // instead of them
  kCluster,         // in one Cluster
  kUnknownCluster,  // in one of unknown size
  kFront,           // before the Segment
  kTracks,
  kTrackEntry,
  kCues,
  kCuePoint,
  kChapters,
  kEdition,
  kAtom,
};

constexpr const char* kPlaceNames[] = {"Level1", "Headers", "Cluster",  "UnknownCluster", "Front",   "Tracks",
                                       "Entry",  "Cues",    "CuePoint", "Chapters",       "Edition", "Atom"};

struct Content {
  const char* name;
  std::function<ByteString(std::size_t)> make;
};

ByteString Fill(const ByteString& part, std::size_t size) { return Repeat(part, size / part.size()); }

/// One repeated.
Content Of(const char* name, ByteString part) {
  return {name, [part = std::move(part)](std::size_t size) { return Fill(part, size); }};
}

ByteString Open(std::uint32_t element) { return ElementOfUnknownSize(element, {}); }

ByteString FramesOfOneByte(Lacing lacing) {
  return LacedBlock(1, 0, lacing, std::vector<ByteString>(256, ByteString{7}));
}

ByteString EmptyLace() {
  return Element(id::kSimpleBlock, BlockData(1, 0, static_cast<std::uint8_t>(Lacing::kFixed), {0xFF}));
}

ByteString CuePointAt(std::uint64_t time) {
  return Element(id::kCuePoint, Join({Unsigned(id::kCueTime, time),
                                      Element(id::kCueTrackPositions, Join({Unsigned(id::kCueTrack, 1),
                                                                            Unsigned(id::kCueClusterPosition, 0)}))}));
}

ByteString NamedAtom(std::string_view name) {
  return Element(id::kChapterAtom, Join({Unsigned(id::kChapterTimeStart, 1),
                                         Element(id::kChapterDisplay, Text(id::kChapterString, name))}));
}

ByteString GroupOf(const ByteString& more) {
  return Element(id::kBlockGroup, Join({Element(id::kBlock, BlockData(1, 0, 0, {})), more}));
}

ByteString Nested(std::uint32_t element, std::size_t size) {
  ByteString all;
  const ByteString head = Join({Id(element)});
  // Sizes that fit, from the inside out, in heads of fixed length.
  const std::size_t count = size / (head.size() + 8);
  all.reserve(count * (head.size() + 8));
  for (std::size_t k = 0; k < count; ++k) {
    const ByteString length = Vint((count - 1 - k) * (head.size() + 8), 8);
    all.insert(all.end(), head.begin(), head.end());
    all.insert(all.end(), length.begin(), length.end());
  }
  return all;
}

/// Anything, anywhere.
const std::vector<Content>& Anything() {
  static const std::vector<Content> contents = {
      {"Zeros", Zeros},
      {"Ones", [](std::size_t size) { return ByteString(size, 0xFF); }},
      {"Noise", [](std::size_t size) { return Noise(size, 3); }},
      Of("EmptyVoids", {id::kVoid, 0x80}),
      Of("VoidsOfOneByte", {id::kVoid, 0x81, 0}),
      Of("ElementsOfOneByte", {0xA7, 0x81, 0}),
      Of("UnknownElements", Element(0x4444, {})),
      Of("Checksums", Element(id::kCrc32, {1, 2, 3, 4})),
      Of("EmptyChecksums", {id::kCrc32, 0x80}),
      Of("OpenTags", Open(id::kTags)),
      Of("Tags", Element(id::kTags, {})),
      Of("SeekHeads", Element(id::kSeekHead, {})),
      Of("OpenClusters", Open(id::kCluster)),
      Of("EmptyClusters", Element(id::kCluster, {})),
      Of("TimedClusters", Cluster(0, {})),
      Of("ClustersOfOneBlock", Cluster(0, SimpleBlock(1, 0, {}))),
      Of("Infos", Element(id::kInfo, {})),
      Of("TracksElements", Element(id::kTracks, {})),
      Of("CuesElements", Element(id::kCues, {})),
      Of("Segments", Element(id::kSegment, {})),
      Of("OpenSegments", Open(id::kSegment)),
      Of("Heads", Element(id::kEbml, {})),
      {"NestedTags", [](std::size_t size) { return Nested(id::kTags, size); }},
  };
  return contents;
}

const std::vector<Content>& InClusters() {
  static const std::vector<Content> contents = {
      Of("EmptyBlocks", {id::kSimpleBlock, 0x80}),
      Of("Blocks", SimpleBlock(1, 0, {})),
      Of("BlocksOfOneByte", SimpleBlock(1, 0, {7})),
      Of("EmptyGroups", {id::kBlockGroup, 0x80}),
      Of("OpenGroups", Open(id::kBlockGroup)),
      Of("Groups", GroupOf({})),
      Of("GroupsWithDuration", GroupOf(Unsigned(id::kBlockDuration, 1))),
      {"GroupOfReferences",
       [](std::size_t size) {
         return GroupOf(Fill({id::kReferenceBlock, 0x80}, size));
       }},
      {"GroupOfBlocks",
       [](std::size_t size) { return GroupOf(Fill(Element(id::kBlock, BlockData(1, 0, 0, {})), size)); }},
      Of("EmptyTimecodes", {id::kTimecode, 0x80}),
      Of("PreviousSizes", {0xAB, 0x80}),
      Of("SilentTracks", Element(0x5854, {})),
      {"SilentTrackNumbers", [](std::size_t size) { return Element(0x5854, Fill(Unsigned(0x58D7, 1), size)); }},
      Of("XiphLaces", FramesOfOneByte(Lacing::kXiph)),
      Of("FixedLaces", FramesOfOneByte(Lacing::kFixed)),
      Of("EbmlLaces", FramesOfOneByte(Lacing::kEbml)),
      Of("LacesOfNothing", EmptyLace()),
      {"OneBlock", [](std::size_t size) { return SimpleBlock(1, 0, Zeros(size)); }},
  };
  return contents;
}

const std::vector<Content>& InTracks() {
  static const std::vector<Content> contents = {
      Of("EmptyEntries", {id::kTrackEntry, 0x80}),
      Of("OpenEntries", Open(id::kTrackEntry)),
      Of("SmallEntries", Element(id::kTrackEntry, Unsigned(id::kTrackNumber, 1))),
      Of("WholeEntries", TrackEntry(1, 2, "A_AC3")),
      Of("EntriesWithVideo", Element(id::kTrackEntry, Element(id::kVideo, {}))),
      Of("EntriesWithEncodings",
         Element(id::kTrackEntry,
                 Element(id::kContentEncodings, Element(id::kContentEncoding, Element(id::kContentCompression, {}))))),
  };
  return contents;
}

const std::vector<Content>& InTrackEntry() {
  static const std::vector<Content> contents = {
      Of("Numbers", {id::kTrackNumber, 0x80}),
      Of("Videos", {id::kVideo, 0x80}),
      Of("Audios", {id::kAudio, 0x80}),
      Of("Names", Element(id::kTrackName, {})),
      Of("CodecIds", Text(id::kCodecId, "A")),
      Of("Encodings",
         Element(id::kContentEncodings, Element(id::kContentEncoding, Element(id::kContentCompression, {})))),
      {"Encoding",
       [](std::size_t size) { return Element(id::kContentEncodings, Fill(Element(id::kContentEncoding, {}), size)); }},
      {"LongName", [](std::size_t size) { return Element(id::kTrackName, ByteString(size, 'x')); }},
      {"LongCodecId", [](std::size_t size) { return Element(id::kCodecId, ByteString(size, 'x')); }},
      {"LongPrivate", [](std::size_t size) { return Element(id::kCodecPrivate, Zeros(size)); }},
      Of("Privates", Element(id::kCodecPrivate, Zeros(100))),
  };
  return contents;
}

const std::vector<Content>& InCues() {
  static const std::vector<Content> contents = {
      Of("EmptyPoints", {id::kCuePoint, 0x80}),
      Of("OpenPoints", Open(id::kCuePoint)),
      Of("Points", CuePointAt(1)),
      Of("PointsOfNothing", Element(id::kCuePoint, {id::kCueTrackPositions, 0x80})),
  };
  return contents;
}

const std::vector<Content>& InCuePoint() {
  static const std::vector<Content> contents = {
      Of("EmptyPositions", {id::kCueTrackPositions, 0x80}),
      Of("Positions",
         Element(id::kCueTrackPositions, Join({Unsigned(id::kCueTrack, 1), Unsigned(id::kCueClusterPosition, 0)}))),
      Of("Times", {id::kCueTime, 0x80}),
  };
  return contents;
}

const std::vector<Content>& InChapters() {
  static const std::vector<Content> contents = {
      Of("EmptyEditions", Element(id::kEditionEntry, {})),
      Of("OpenEditions", Open(id::kEditionEntry)),
      Of("Editions", Element(id::kEditionEntry, NamedAtom("x"))),
  };
  return contents;
}

const std::vector<Content>& InEdition() {
  static const std::vector<Content> contents = {
      Of("EmptyAtoms", {id::kChapterAtom, 0x80}),
      Of("OpenAtoms", Open(id::kChapterAtom)),
      Of("NamedAtoms", NamedAtom("x")),
      Of("AtomsWithLongNames", NamedAtom(std::string(60000, 'x'))),
      {"NestedAtoms", [](std::size_t size) { return Nested(id::kChapterAtom, size); }},
  };
  return contents;
}

const std::vector<Content>& InAtom() {
  static const std::vector<Content> contents = {
      Of("Displays", {id::kChapterDisplay, 0x80}),
      Of("Names", Element(id::kChapterDisplay, Text(id::kChapterString, "x"))),
      {"LongName",
       [](std::size_t size) {
         return Element(id::kChapterDisplay, Element(id::kChapterString, ByteString(size, 'x')));
       }},
  };
  return contents;
}

struct Case {
  Place place;
  const Content* content;
};

const std::vector<Case>& Cases() {
  static const std::vector<Case> cases = [] {
    std::vector<Case> all;
    const auto add = [&all](Place place, const std::vector<Content>& contents) {
      for (const Content& content : contents) all.push_back({place, &content});
    };
    for (const Place place : {Place::kLevel1, Place::kHeaders, Place::kCluster, Place::kUnknownCluster, Place::kFront,
                              Place::kTracks, Place::kCues, Place::kChapters}) {
      add(place, Anything());
    }
    add(Place::kLevel1, InClusters());
    add(Place::kCluster, InClusters());
    add(Place::kUnknownCluster, InClusters());
    add(Place::kTracks, InTracks());
    add(Place::kTrackEntry, InTrackEntry());
    add(Place::kCues, InCues());
    add(Place::kCuePoint, InCuePoint());
    add(Place::kChapters, InChapters());
    add(Place::kEdition, InEdition());
    add(Place::kAtom, InAtom());
    return all;
  }();
  return cases;
}

ByteString Headers(const ByteString& trackEntries) {
  return Join({Element(id::kInfo, {}), Element(id::kTracks, trackEntries)});
}

ByteString UsualHeaders() { return Headers(TrackEntry(1, 2, "A_AC3")); }

/// A file whose SeekHead leads to `content`, a first child of that kind.
ByteString FileWith(std::uint32_t element, const ByteString& content) {
  const std::size_t length = SeekHeadFor(element, 0).size();
  return MatroskaFile(Join({SeekHeadFor(element, length), Element(element, content), UsualHeaders()}));
}

ByteString FileAt(Place place, const ByteString& content) {
  switch (place) {
    case Place::kLevel1:
      return MatroskaFile(Join({UsualHeaders(), content}));
    case Place::kHeaders:
      return MatroskaFile(content);
    case Place::kCluster:
      return MatroskaFile(Join({UsualHeaders(), Element(id::kCluster, content)}));
    case Place::kUnknownCluster:
      return MatroskaFile(Join({UsualHeaders(), ElementOfUnknownSize(id::kCluster, content)}));
    case Place::kFront:
      return Join({EbmlHead(), content, Element(id::kSegment, UsualHeaders())});
    case Place::kTracks:
      return MatroskaFile(Headers(content));
    case Place::kTrackEntry:
      return MatroskaFile(Headers(Element(id::kTrackEntry, content)));
    case Place::kCues:
      return FileWith(id::kCues, content);
    case Place::kCuePoint:
      return FileWith(id::kCues, Element(id::kCuePoint, content));
    case Place::kChapters:
      return FileWith(id::kChapters, content);
    case Place::kEdition:
      return FileWith(id::kChapters, Element(id::kEditionEntry, content));
    case Place::kAtom:
      return FileWith(id::kChapters, Element(id::kEditionEntry, Element(id::kChapterAtom, content)));
  }
  return {};
}

}  // namespace

std::size_t FillingCount() { return Cases().size(); }

Filling MakeFilling(std::size_t index, std::size_t size) {
  const Case& wanted = Cases().at(index);
  const ByteString content = wanted.content->make(size);
  const bool inCluster = wanted.place == Place::kCluster || wanted.place == Place::kUnknownCluster;
  return {FillingName(index), FileAt(wanted.place, content), inCluster ? content.size() : 0};
}

std::string FillingName(std::size_t index) {
  const Case& wanted = Cases().at(index);
  return std::string(kPlaceNames[static_cast<std::size_t>(wanted.place)]) + wanted.content->name;
}

}  // namespace tarvex::test
