#include "scanner/seek_index_builder.h"

#include <matroska/KaxBlock.h>
#include <matroska/KaxBlockData.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxCuesData.h>
#include <matroska/KaxSemantic.h>

#include "scanner/block_time.h"
#include "scanner/cluster_delivery.h"
#include "scanner/limits.h"

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

class CClusterIndexer {
 public:
  CClusterIndexer(std::uint64_t track, std::uint64_t scale, std::vector<SeekPoint>& index)
      : m_track(track), m_clock(scale), m_index(index) {}

  void BeginCluster(const KaxCluster& cluster) {
    m_position = cluster.GetElementPosition();
    m_clock.BeginCluster();
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

  const std::uint64_t m_track;
  CClusterClock m_clock;
  std::vector<SeekPoint>& m_index;
  std::uint64_t m_position = 0;  // of the Cluster
};

}  // namespace

std::vector<SeekPoint> IndexFromCues(CElementWalker& walker, const CMatroskaInfo& info) {
  std::vector<SeekPoint> index;
  const auto segment = walker.FindSegment();
  if (!segment) return index;
  const auto cues = walker.FindThroughSeekHead<KaxCues>(*segment);
  if (!cues) return index;
  const std::uint64_t scale = info.TimecodeScale();
  walker.ReadEachChild(*cues, CMasterReader::Frames::kRead, [&](libebml::EbmlElement& child) {
    const auto* point = ElementAs<KaxCuePoint>(&child);
    if (point != nullptr) AddCuePoint(*point, *segment, scale, index);
  });
  return index;
}

std::optional<std::vector<SeekPoint>> IndexFromClusters(CElementWalker& walker, const CMatroskaInfo& info,
                                                        const std::function<bool()>& eventsPending) {
  std::vector<SeekPoint> index;
  const auto segment = walker.FindSegment();
  if (!segment) return index;
  const std::int64_t video = info.FirstVideoTrackNumber();
  CClusterIndexer indexer(video < 0 ? kIndexedTrack : static_cast<std::uint64_t>(video), info.TimecodeScale(), index);
  while (const auto cluster = walker.FindNextCluster(*segment)) {
    if (eventsPending()) return std::nullopt;
    indexer.BeginCluster(*cluster);
    walker.ReadEachChild(*cluster, CMasterReader::Frames::kLeaveOut,
                         [&](const libebml::EbmlElement& child) { indexer.Add(child); });
  }
  return index;
}

}  // namespace tarvex
