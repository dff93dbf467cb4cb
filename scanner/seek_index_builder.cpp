#include "scanner/seek_index_builder.h"

#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxCuesData.h>

#include "scanner/block_time.h"
#include "scanner/cluster_delivery.h"

namespace tarvex {

using libmatroska::KaxBlock;
using libmatroska::KaxBlockGroup;
using libmatroska::KaxCluster;
using libmatroska::KaxClusterTimecode;
using libmatroska::KaxCuePoint;
using libmatroska::KaxCues;
using libmatroska::KaxSegment;
using libmatroska::KaxSimpleBlock;

namespace {

constexpr std::uint64_t kIndexedTrack = 1;

void AddCuePoint(const KaxCuePoint& point, const KaxSegment& segment, std::uint64_t scale,
                 std::vector<SeekPoint>& index) {
  const auto* positions = point.GetSeekPosition();
  if (positions == nullptr || positions->TrackNumber() != kIndexedTrack) return;
  std::uint64_t nanoseconds = 0;
  if (!point.Timecode(nanoseconds, scale)) return;
  index.push_back({segment.GetGlobalPosition(positions->ClusterPosition()), nanoseconds / kNanosecondsPerUnit});
}

class CClusterIndexer {
 public:
  CClusterIndexer(std::uint64_t track, std::uint64_t scale, std::vector<SeekPoint>& index)
      : m_track(track), m_scale(scale), m_index(index) {}

  void Add(KaxCluster& cluster) {
    StartCluster(cluster, m_scale);
    for (libebml::EbmlElement* child : cluster) {
      if (const auto* timecode = ElementAs<KaxClusterTimecode>(child)) {
        cluster.InitTimecode(timecode->GetValue(), static_cast<std::int64_t>(m_scale));
      } else if (auto* block = ElementAs<KaxSimpleBlock>(child)) {
        block->SetParent(cluster);
        if (block->TrackNum() == m_track && block->IsKeyframe()) AddBlock(cluster, *block);
      } else if (auto* group = ElementAs<KaxBlockGroup>(child)) {
        AddGroup(cluster, *group);
      }
    }
  }

 private:
  void AddGroup(KaxCluster& cluster, KaxBlockGroup& group) {
    group.SetParent(cluster);
    if (group.TrackNumber() != m_track || group.ReferenceCount() != 0) return;
    for (libebml::EbmlElement* child : group) {
      if (auto* block = ElementAs<KaxBlock>(child)) {
        block->SetParent(cluster);
        AddBlock(cluster, *block);
      }
    }
  }

  void AddBlock(const KaxCluster& cluster, const libmatroska::KaxInternalBlock& block) {
    m_index.push_back({cluster.GetElementPosition(), BlockTime(block)});
  }

  const std::uint64_t m_track;
  const std::uint64_t m_scale;
  std::vector<SeekPoint>& m_index;
};

}  // namespace

std::vector<SeekPoint> IndexFromCues(CElementWalker walker, const CMatroskaInfo& info) {
  std::vector<SeekPoint> index;
  const auto segment = walker.FindSegment();
  if (!segment) return index;
  const auto cues = walker.FindThroughSeekHead<KaxCues>(*segment);
  if (!cues) return index;
  walker.ReadMaster(*cues);
  for (const libebml::EbmlElement* child : *cues) {
    if (const auto* point = ElementAs<KaxCuePoint>(child)) {
      AddCuePoint(*point, *segment, info.TimecodeScale(), index);
    }
  }
  return index;
}

std::optional<std::vector<SeekPoint>> IndexFromClusters(CElementWalker walker, const CMatroskaInfo& info,
                                                        const std::function<bool()>& eventsPending) {
  std::vector<SeekPoint> index;
  const auto segment = walker.FindSegment();
  if (!segment) return index;
  const std::int64_t video = info.FirstVideoTrackNumber();
  CClusterIndexer indexer(video < 0 ? kIndexedTrack : static_cast<std::uint64_t>(video), info.TimecodeScale(), index);
  while (const auto cluster = walker.FindNextCluster(*segment)) {
    if (eventsPending()) return std::nullopt;
    walker.ReadMaster(*cluster);
    indexer.Add(*cluster);
  }
  return index;
}

}  // namespace tarvex
