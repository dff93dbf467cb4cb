#include "scanner/index/cluster_indexer.h"

#include <matroska/KaxBlockData.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxSemantic.h>

#include <algorithm>
#include <iterator>

#include "scanner/elements/element_ids.h"
#include "scanner/elements/plain_elements.h"
#include "scanner/index/indexed_track.h"
#include "scanner/limits.h"

namespace tarvex {

using libmatroska::KaxBlock;
using libmatroska::KaxBlockGroup;
using libmatroska::KaxCluster;
using libmatroska::KaxClusterTimecode;
using libmatroska::KaxReferenceBlock;
using libmatroska::KaxSimpleBlock;

namespace {

namespace id = element_ids;

/// Elements that say nothing about the index, and what kind of data they have.
enum class Content : std::uint8_t { kNumber, kBytes, kElements };
constexpr struct {
  std::uint32_t parent;
  std::uint32_t id;
  Content content;
} kPassed[] = {
    {id::kCluster, id::kPosition, Content::kNumber},
    {id::kCluster, id::kPrevSize, Content::kNumber},
    {id::kCluster, id::kSilentTracks, Content::kElements},
    {id::kSilentTracks, id::kSilentTrackNumber, Content::kNumber},
    {id::kCluster, id::kEncryptedBlock, Content::kBytes},
    {id::kBlockGroup, id::kBlockDuration, Content::kNumber},
    {id::kBlockGroup, id::kReferencePriority, Content::kNumber},
    {id::kBlockGroup, id::kReferenceVirtual, Content::kNumber},
    {id::kBlockGroup, id::kDiscardPadding, Content::kNumber},
    {id::kBlockGroup, id::kCodecState, Content::kBytes},
    {id::kBlockGroup, id::kBlockAdditions, Content::kElements},
    {id::kBlockAdditions, id::kBlockMore, Content::kElements},
    {id::kBlockMore, id::kBlockAddId, Content::kNumber},
    {id::kBlockMore, id::kBlockAdditional, Content::kBytes},
};

bool MayBePassed(PlainWalk& walk, const ElementHeader& header, std::uint32_t parent);

bool MayAllBePassed(PlainWalk walk, std::uint32_t parent) {
  while (!walk.IsAtEnd()) {
    const auto header = walk.Head();
    if (!header || !MayBePassed(walk, *header, parent)) return false;
    walk.Pass(*header);
  }
  return true;
}

// No deeper than the table.
bool MayBePassed(PlainWalk& walk, const ElementHeader& header, std::uint32_t parent) {
  constexpr std::uint64_t kLongestNumber = 8;
  constexpr std::uint64_t kChecksumBytes = 4;
  if (header.size >= limits::kElement) return false;
  if (header.id == id::kVoid) return true;
  if (header.id == id::kCrc32) return header.size == kChecksumBytes;
  const auto* row =
      std::ranges::find_if(kPassed, [&](const auto& each) { return each.parent == parent && each.id == header.id; });
  if (row == std::end(kPassed)) return false;
  if (row->content == Content::kElements) return MayAllBePassed(walk.Inside(header), header.id);
  return row->content == Content::kBytes || header.size <= kLongestNumber;
}

std::optional<BlockHead> BlockHeadAt(PlainWalk& walk, const ElementHeader& header) {
  if (header.size >= limits::kElement) return std::nullopt;
  return ParseBlockHead(walk.Data(header, BlockHead::kMaxBytes));
}

}  // namespace

ClusterIndexer::ClusterIndexer(ElementWalker& walker, const CMatroskaInfo& info, IndexEntries& index)
    : m_walker(walker), m_track(TrackOfClusterIndex(info)), m_index(index), m_clock(info.TimecodeScale()) {}

void ClusterIndexer::Add(KaxCluster& cluster) {
  m_position = cluster.GetElementPosition();
  if (AddPlain(cluster)) return;
  m_clock.BeginCluster();
  m_walker.MoveTo(cluster.GetDataStart());
  m_walker.ReadEachChild(cluster, MasterReader::Frames::kLeaveOut, [this](const libebml::EbmlElement& child) {
    AddChild(child);
    return true;
  });
}

/// The quick way, for a Cluster as muxers write it: reads the heads of its blocks and nothing else. Adds what AddChild
/// would for each child. False when the Cluster holds anything unusual; then nothing was added.
bool ClusterIndexer::AddPlain(const KaxCluster& cluster) {
  if (!m_walker.IsWhole(cluster)) return false;
  m_found.clear();
  m_clock.BeginCluster();
  PlainWalk walk(m_walker, cluster.GetDataStart(), cluster.GetEndPosition(), m_step);
  while (!walk.IsAtEnd()) {
    const auto header = walk.Head();
    if (!header || !AddPlainChild(walk, *header)) return false;
    walk.Pass(*header);
  }
  for (const SeekPoint& entry : m_found) m_index.Add(entry);
  m_walker.MoveTo(cluster.GetEndPosition());
  return true;
}

bool ClusterIndexer::AddPlainChild(PlainWalk& walk, const ElementHeader& header) {
  switch (header.id) {
    case id::kSimpleBlock: {
      const auto block = BlockHeadAt(walk, header);
      return block && AddPlainBlock(*block, block->isKeyFrame);
    }
    case id::kBlockGroup:
      return AddPlainGroup(walk.Inside(header));
    case id::kTimecode: {
      const auto ticks = PlainNumber(walk.Data(header, sizeof(std::uint64_t) + 1));
      if (ticks) m_clock.SetTimecode(*ticks);
      return ticks.has_value();
    }
    default:
      return MayBePassed(walk, header, id::kCluster);
  }
}

// One block, and perhaps what goes with it.
bool ClusterIndexer::AddPlainGroup(PlainWalk walk) {
  std::optional<BlockHead> block;
  bool isKeyFrame = true;
  while (!walk.IsAtEnd()) {
    const auto header = walk.Head();
    if (!header) return false;
    if (header->id == id::kBlock) {
      if (block) return false;
      block = BlockHeadAt(walk, *header);
      if (!block) return false;
    } else if (header->id == id::kReferenceBlock) {
      if (header->size == 0 || header->size > sizeof(std::uint64_t)) return false;
      isKeyFrame = false;
    } else if (!MayBePassed(walk, *header, id::kBlockGroup)) {
      return false;
    }
    walk.Pass(*header);
  }
  return !block || AddPlainBlock(*block, isKeyFrame);
}

// A lace decides by its sizes whether it is a block at all, and so is not plain.
bool ClusterIndexer::AddPlainBlock(const BlockHead& block, bool isKeyFrame) {
  if (block.track != m_track || !isKeyFrame) return true;
  if (block.lacing != BlockLacing::kNone || m_found.size() == limits::kPlainClusterEntries) return false;
  m_found.push_back({m_position, m_clock.TimeOf(block.relativeTime)});
  return true;
}

void ClusterIndexer::AddChild(const libebml::EbmlElement& child) {
  if (const auto* timecode = ElementAs<KaxClusterTimecode>(&child)) {
    m_clock.SetTimecode(*timecode);
  } else if (const auto* block = ElementAs<KaxSimpleBlock>(&child)) {
    if (block->TrackNum() == m_track && block->IsKeyframe()) AddBlock(*block);
  } else if (const auto* group = ElementAs<KaxBlockGroup>(&child)) {
    AddGroup(*group);
  }
}

// The first block's track number is the group's.
void ClusterIndexer::AddGroup(const KaxBlockGroup& group) {
  const auto* first = ElementAs<KaxBlock>(group.FindFirstElt(EBML_INFO(KaxBlock)));
  if (first == nullptr || first->TrackNum() != m_track) return;
  if (group.FindFirstElt(EBML_INFO(KaxReferenceBlock)) != nullptr) return;
  for (const libebml::EbmlElement* child : group) {
    if (const auto* block = ElementAs<KaxBlock>(child)) AddBlock(*block);
  }
}

void ClusterIndexer::AddBlock(const libmatroska::KaxInternalBlock& block) {
  m_index.Add({m_position, m_clock.TimeOf(block)});
}

}  // namespace tarvex
