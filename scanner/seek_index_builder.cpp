#include "scanner/seek_index_builder.h"

#include <matroska/KaxBlock.h>
#include <matroska/KaxBlockData.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxCuesData.h>
#include <matroska/KaxSemantic.h>

#include <algorithm>
#include <span>

#include "scanner/block_time.h"
#include "scanner/cluster_delivery.h"
#include "scanner/element_header.h"
#include "scanner/limits.h"
#include "scanner/plain_elements.h"

namespace tarvex {

using libmatroska::KaxBlock;
using libmatroska::KaxBlockGroup;
using libmatroska::KaxCluster;
using libmatroska::KaxClusterTimecode;
using libmatroska::KaxCueClusterPosition;
using libmatroska::KaxCuePoint;
using libmatroska::KaxCues;
using libmatroska::KaxCueTrackPositions;
using libmatroska::KaxReferenceBlock;
using libmatroska::KaxSegment;
using libmatroska::KaxSimpleBlock;

namespace {

constexpr std::uint64_t kIndexedTrack = 1;

namespace id {
constexpr std::uint32_t kTimecode = 0xE7;
constexpr std::uint32_t kPosition = 0xA7;
constexpr std::uint32_t kPrevSize = 0xAB;
constexpr std::uint32_t kVoid = 0xEC;
constexpr std::uint32_t kSimpleBlock = 0xA3;
constexpr std::uint32_t kBlockGroup = 0xA0;
constexpr std::uint32_t kBlock = 0xA1;
constexpr std::uint32_t kBlockDuration = 0x9B;
constexpr std::uint32_t kReferenceBlock = 0xFB;
constexpr std::uint32_t kDiscardPadding = 0x75A2;
}  // namespace id

// At the limit every second entry goes, which leaves it as even as it was, and a seek a little earlier.
void AddEntry(const SeekPoint& entry, std::vector<SeekPoint>& index) {
  if (index.size() == limits::kIndexEntries) {
    for (std::size_t kept = 1; kept < index.size() / 2; ++kept) index[kept] = index[2 * kept];
    index.resize(index.size() / 2);
  }
  index.push_back(entry);
}

/// The one that names the earliest Cluster.
const KaxCueTrackPositions* EarliestPositions(const KaxCuePoint& point) {
  const KaxCueTrackPositions* earliest = nullptr;
  std::uint64_t position = 0xFFFFFFFFFFFFFFF;  // as libmatroska, which however takes quadratic time
  for (const libebml::EbmlElement* child : point) {
    const auto* candidate = ElementAs<KaxCueTrackPositions>(child);
    if (candidate == nullptr || candidate->FindFirstElt(EBML_INFO(KaxCueClusterPosition)) == nullptr) continue;
    if (candidate->ClusterPosition() >= position) continue;
    earliest = candidate;
    position = candidate->ClusterPosition();
  }
  return earliest;
}

void AddCuePoint(const KaxCuePoint& point, const KaxSegment& segment, std::uint64_t scale,
                 std::vector<SeekPoint>& index) {
  const auto* positions = EarliestPositions(point);
  if (positions == nullptr || positions->TrackNumber() != kIndexedTrack) return;
  std::uint64_t nanoseconds = 0;
  if (!point.Timecode(nanoseconds, scale)) return;
  AddEntry({segment.GetGlobalPosition(positions->ClusterPosition()), nanoseconds / kNanosecondsPerUnit}, index);
}

/// Of a stream that reaches to `end`: the bytes from `position` on, at least so many if there are.
std::span<const std::uint8_t> BytesBefore(CElementWalker& walker, std::uint64_t position, std::uint64_t end,
                                          std::uint64_t atLeast, std::size_t chunk) {
  const std::uint64_t left = end - position;
  const auto bytes = walker.Bytes(position, static_cast<std::size_t>(std::min(atLeast, left)),
                                  static_cast<std::size_t>(std::min<std::uint64_t>(chunk, left)));
  return bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left)));
}

/// Walks over the children of a master that is whole, reading little more than is looked at.
class CPlainWalk {
 public:
  CPlainWalk(CElementWalker& walker, const libebml::EbmlMaster& master, std::size_t chunk)
      : m_walker(walker), m_position(master.GetDataStart()), m_end(master.GetEndPosition()), m_chunk(chunk) {}

  bool IsAtEnd() const { return m_position >= m_end; }
  std::uint64_t Position() const { return m_position; }
  /// The head of the next child; nothing when it is none of known size that ends within the master.
  std::optional<ElementHeader> Head() {
    const auto header = ParseElementHeader(Bytes(m_position, ElementHeader::kMaxBytes));
    if (!header || !header->sizeKnown || header->size > m_end - m_position - header->Length()) return std::nullopt;
    return header;
  }
  /// Bytes of the child with this head, from its data on: at least `count` if it has so many.
  std::span<const std::uint8_t> Data(const ElementHeader& header, std::uint64_t count) {
    const std::uint64_t wanted = std::min(count, header.size);
    return Bytes(m_position + header.Length(), wanted).first(static_cast<std::size_t>(wanted));
  }
  void Pass(const ElementHeader& header) { m_position += header.Length() + header.size; }
  void Enter(const ElementHeader& header) { m_position += header.Length(); }

 private:
  std::span<const std::uint8_t> Bytes(std::uint64_t position, std::uint64_t atLeast) {
    return BytesBefore(m_walker, position, m_end, atLeast, m_chunk);
  }

  CElementWalker& m_walker;
  std::uint64_t m_position;
  const std::uint64_t m_end;
  const std::size_t m_chunk;
};

void Reserve(std::vector<SeekPoint>& index, std::uint64_t entries) {
  index.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(entries, limits::kIndexEntries)));
}

/// Cues as muxers write them, without an object for each element. False when there is anything else in them;
/// then `index` is as it was.
bool AddPlainCues(CElementWalker& walker, const KaxCues& cues, const KaxSegment& segment, std::uint64_t scale,
                  std::vector<SeekPoint>& index) {
  constexpr std::size_t kChunk = std::size_t{1} << 20;
  constexpr std::uint64_t kLongestPoint = 1u << 16;
  if (!walker.IsWhole(cues)) return false;
  const std::uint64_t start = segment.GetGlobalPosition(0);
  const std::uint64_t end = cues.GetEndPosition();
  std::vector<SeekPoint> points;
  std::span<const std::uint8_t> bytes;  // those at hand from `position` on
  for (std::uint64_t position = cues.GetDataStart(); position < end;) {
    const auto element = ParsePlainElement(bytes);
    if (!element) {
      const std::size_t known = bytes.size();
      bytes = BytesBefore(walker, position, end, kLongestPoint, kChunk);
      if (bytes.size() <= known) return false;
      continue;
    }
    if (element->id != EBML_ID_VALUE(EBML_ID(KaxCuePoint))) return false;
    const auto point = ParsePlainCuePoint(element->data);
    if (!point) return false;
    if (point->track == kIndexedTrack) {
      if (points.empty()) Reserve(points, cues.GetSize() / element->length);
      AddEntry({start + point->position, point->time * scale / kNanosecondsPerUnit}, points);
    }
    bytes = bytes.subspan(element->length);
    position += element->length;
  }
  index = std::move(points);
  return true;
}

class CClusterIndexer {
 public:
  CClusterIndexer(std::uint64_t track, std::uint64_t scale, std::vector<SeekPoint>& index)
      : m_track(track), m_clock(scale), m_index(index) {}

  void BeginCluster(const KaxCluster& cluster) {
    m_position = cluster.GetElementPosition();
    m_clock.BeginCluster();
  }

  /// The same as Add for each child of the Cluster that began, which must be as muxers write it: reads the heads
  /// of its blocks and nothing else. False when there is anything else in it; then nothing was added.
  bool AddPlain(CElementWalker& walker, const KaxCluster& cluster) {
    if (!walker.IsWhole(cluster)) return false;
    m_found.clear();
    CPlainWalk walk(walker, cluster, kChunk);
    while (!walk.IsAtEnd()) {
      const auto header = walk.Head();
      if (!header || !AddPlainChild(walk, *header)) return false;
    }
    for (const SeekPoint& entry : m_found) AddEntry(entry, m_index);
    walker.MoveTo(cluster.GetEndPosition());
    return true;
  }

  void Add(const libebml::EbmlElement& child) {
    if (const auto* timecode = ElementAs<KaxClusterTimecode>(&child)) {
      m_clock.SetTimecode(*timecode);
    } else if (const auto* block = ElementAs<KaxSimpleBlock>(&child)) {
      if (block->TrackNum() == m_track && block->IsKeyframe()) AddBlock(*block);
    } else if (const auto* group = ElementAs<KaxBlockGroup>(&child)) {
      AddGroup(*group);
    }
  }

 private:
  // The first block's track number is the group's.
  void AddGroup(const KaxBlockGroup& group) {
    const auto* first = ElementAs<KaxBlock>(group.FindFirstElt(EBML_INFO(KaxBlock)));
    if (first == nullptr || first->TrackNum() != m_track) return;
    if (group.FindFirstElt(EBML_INFO(KaxReferenceBlock)) != nullptr) return;
    for (const libebml::EbmlElement* child : group) {
      if (const auto* block = ElementAs<KaxBlock>(child)) AddBlock(*block);
    }
  }

  void AddBlock(const libmatroska::KaxInternalBlock& block) { AddEntry({m_position, m_clock.TimeOf(block)}, m_index); }

  static constexpr std::size_t kChunk = 64;
  static constexpr std::uint64_t kLongestNumber = 8;
  static constexpr std::size_t kMostFound = limits::kPlainClusterEntries;

  bool AddPlainChild(CPlainWalk& walk, const ElementHeader& header) {
    switch (header.id) {
      case id::kTimecode: {
        const auto ticks = PlainNumber(walk.Data(header, header.size));
        if (!ticks) return false;
        m_clock.SetTimecode(*ticks);
        break;
      }
      case id::kSimpleBlock: {
        const auto block = PlainBlockAt(walk, header);
        if (!block || !AddPlainBlock(*block, block->isKeyFrame)) return false;
        break;
      }
      case id::kBlockGroup:
        return AddPlainGroup(walk, header);
      case id::kPosition:
      case id::kPrevSize:
        if (header.size > kLongestNumber) return false;
        break;
      case id::kVoid:
        if (header.size >= limits::kElement) return false;
        break;
      default:
        return false;
    }
    walk.Pass(header);
    return true;
  }

  static std::optional<PlainBlock> PlainBlockAt(CPlainWalk& walk, const ElementHeader& header) {
    if (header.size >= limits::kElement) return std::nullopt;
    return ParsePlainBlock(walk.Data(header, kLongestBlockHead));
  }

  // A lace decides by its sizes whether it is a block at all, and so is not plain.
  bool AddPlainBlock(const PlainBlock& block, bool isKeyFrame) {
    if (block.track != m_track || !isKeyFrame) return true;
    if (block.isLaced || m_found.size() == kMostFound) return false;
    m_found.push_back({m_position, m_clock.TimeOf(block.relativeTime)});
    return true;
  }

  // One block, and perhaps its duration and references.
  bool AddPlainGroup(CPlainWalk& walk, const ElementHeader& group) {
    const std::uint64_t end = walk.Position() + group.Length() + group.size;
    std::optional<PlainBlock> block;
    bool isKeyFrame = true;
    walk.Enter(group);
    while (walk.Position() < end) {
      const auto header = walk.Head();
      if (!header || header->size > end - walk.Position() - header->Length()) return false;
      if (header->id == id::kBlock) {
        if (block) return false;
        block = PlainBlockAt(walk, *header);
        if (!block) return false;
      } else if (header->id == id::kReferenceBlock) {
        if (!PlainNumber(walk.Data(*header, header->size))) return false;
        isKeyFrame = false;
      } else if ((header->id != id::kBlockDuration && header->id != id::kDiscardPadding) ||
                 header->size > kLongestNumber) {
        return false;
      }
      walk.Pass(*header);
    }
    return !block || AddPlainBlock(*block, isKeyFrame);
  }

  const std::uint64_t m_track;
  CClusterClock m_clock;
  std::vector<SeekPoint> m_found;  // in a Cluster of which it is not known yet that it is plain
  std::vector<SeekPoint>& m_index;
  std::uint64_t m_position = 0;  // of the Cluster
};

}  // namespace

std::vector<SeekPoint> IndexFromCues(CElementWalker& walker, const KaxSegment& segment, std::uint64_t position,
                                     std::uint64_t scale) {
  std::vector<SeekPoint> index;
  const auto cues = walker.FindAt<KaxCues>(segment, position);
  if (!cues || AddPlainCues(walker, *cues, segment, scale, index)) return index;
  walker.MoveTo(cues->GetDataStart());
  walker.ReadEachChild(*cues, CMasterReader::Frames::kRead, [&](libebml::EbmlElement& child) {
    const auto* point = ElementAs<KaxCuePoint>(&child);
    if (point != nullptr) AddCuePoint(*point, segment, scale, index);
    return true;
  });
  index.shrink_to_fit();
  return index;
}

std::optional<std::vector<SeekPoint>> IndexFromClusters(CElementWalker& walker, const KaxSegment& segment,
                                                        const CMatroskaInfo& info,
                                                        const std::function<bool()>& eventsPending) {
  std::vector<SeekPoint> index;
  const std::int64_t video = info.FirstVideoTrackNumber();
  CClusterIndexer indexer(video < 0 ? kIndexedTrack : static_cast<std::uint64_t>(video), info.TimecodeScale(), index);
  while (const auto cluster = walker.FindNextCluster(segment)) {
    if (eventsPending()) return std::nullopt;
    indexer.BeginCluster(*cluster);
    if (indexer.AddPlain(walker, *cluster)) continue;
    indexer.BeginCluster(*cluster);
    walker.MoveTo(cluster->GetDataStart());
    walker.ReadEachChild(*cluster, CMasterReader::Frames::kLeaveOut, [&](const libebml::EbmlElement& child) {
      indexer.Add(child);
      return true;
    });
  }
  index.shrink_to_fit();
  return index;
}

}  // namespace tarvex
