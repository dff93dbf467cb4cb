#include "scanner/cluster_delivery.h"

#include <matroska/KaxBlockData.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxSemantic.h>

#include <limits>
#include <string>
#include <vector>

#include "framework/log.h"
#include "scanner/block_time.h"
#include "scanner/element_walker.h"

namespace tarvex {

using libmatroska::KaxBlock;
using libmatroska::KaxBlockDuration;
using libmatroska::KaxBlockGroup;
using libmatroska::KaxCluster;
using libmatroska::KaxClusterTimecode;
using libmatroska::KaxInternalBlock;
using libmatroska::KaxReferenceBlock;
using libmatroska::KaxSimpleBlock;

void StartCluster(KaxCluster& cluster, std::uint64_t timecodeScale) {
  cluster.InitTimecode(0, static_cast<std::int64_t>(timecodeScale));
}

std::uint64_t BlockTime(const KaxInternalBlock& block) { return UnitsFromSignedNanoseconds(block.GlobalTimecode()); }

bool CClusterDelivery::DeliverCluster(KaxCluster* cluster) {
  if (cluster == nullptr) {
    LogText("CEbmlScanner::DeliverCluster !cluster exiting");
    return false;
  }
  StartCluster(*cluster, m_timecodeScale);
  for (libebml::EbmlElement* child : *cluster) {
    if (m_eventsPending()) {
      LogText("CEbmlScanner::DeliverCluster exiting");
      return false;
    }
    if (!DeliverChild(*cluster, *child)) return false;
  }
  return true;
}

bool CClusterDelivery::DeliverChild(KaxCluster& cluster, libebml::EbmlElement& child) {
  if (const auto* timecode = ElementAs<KaxClusterTimecode>(&child)) {
    cluster.InitTimecode(timecode->GetValue(), static_cast<std::int64_t>(m_timecodeScale));
    LogFormat("cluster time: %s", std::to_string(UnitsFromTicks(timecode->GetValue(), m_timecodeScale)).c_str());
  } else if (auto* block = ElementAs<KaxSimpleBlock>(&child)) {
    block->SetParent(cluster);
    if (!DeliverSimpleBlock(*block)) {
      LogText("DeliverSimpleBlock failed exiting");
      return false;
    }
  } else if (auto* group = ElementAs<KaxBlockGroup>(&child)) {
    group->SetParent(cluster);
    if (!DeliverBlockGroup(cluster, *group)) {
      LogText("DeliverBlockGroupBlocks failed exiting");
      return false;
    }
  }
  return true;
}

bool CClusterDelivery::DeliverSimpleBlock(KaxSimpleBlock& block) {
  return DeliverFrames(block, block.IsKeyframe(), m_info.DefaultFrameDuration(block.TrackNum()));
}

bool CClusterDelivery::DeliverBlockGroup(KaxCluster& cluster, KaxBlockGroup& group) {
  std::vector<libebml::EbmlElement*> children;
  for (libebml::EbmlElement* child : group) {
    const bool wanted = ElementAs<KaxReferenceBlock>(child) != nullptr ||
                        ElementAs<KaxBlockDuration>(child) != nullptr || ElementAs<KaxBlock>(child) != nullptr;
    if (wanted) children.push_back(child);
    // The group gives its Cluster to the first block only.
    if (auto* block = ElementAs<KaxBlock>(child)) block->SetParent(cluster);
  }
  return DeliverBlockGroupBlocks(children);
}

bool CClusterDelivery::DeliverBlockGroupBlocks(std::span<libebml::EbmlElement* const> children) {
  KaxBlock* block = nullptr;
  std::uint64_t duration = 0;
  bool referencesOthers = false;
  for (libebml::EbmlElement* child : children) {
    if (auto* found = ElementAs<KaxBlock>(child)) {
      block = found;
    } else if (const auto* length = ElementAs<KaxBlockDuration>(child)) {
      duration = UnitsFromTicks(length->GetValue(), m_timecodeScale);
    } else if (ElementAs<KaxReferenceBlock>(child) != nullptr) {
      referencesOthers = true;
    }
  }
  if (block == nullptr) return true;
  if (duration == 0) duration = m_info.DefaultFrameDuration(block->TrackNum());
  return DeliverFrames(*block, !referencesOthers, duration);
}

bool CClusterDelivery::DeliverFrames(KaxInternalBlock& block, bool keyFrame, std::uint64_t duration) {
  // A larger number must not pass for that of another track.
  if (block.TrackNum() > std::numeric_limits<std::uint32_t>::max()) return true;
  FrameInfo frame;
  frame.keyFrame = keyFrame;
  frame.trackNumber = static_cast<std::uint32_t>(block.TrackNum());
  frame.start = BlockTime(block);
  frame.duration = duration;
  for (unsigned int index = 0; index < block.NumberFrames(); ++index) {
    const libmatroska::DataBuffer& buffer = block.GetBuffer(index);
    frame.data = buffer.Buffer();
    frame.size = buffer.Size();
    if (!m_onFrame(frame)) return false;
    frame.start += duration;
  }
  return true;
}

}  // namespace tarvex
