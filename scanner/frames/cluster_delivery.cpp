#include "scanner/frames/cluster_delivery.h"

#include <matroska/KaxBlockData.h>
#include <matroska/KaxSemantic.h>

#include <limits>
#include <string>

#include "framework/log.h"
#include "scanner/elements/borrowed_block.h"
#include "scanner/elements/element_walker.h"

namespace tarvex {

using libmatroska::KaxBlock;
using libmatroska::KaxBlockDuration;
using libmatroska::KaxBlockGroup;
using libmatroska::KaxCluster;
using libmatroska::KaxClusterTimecode;
using libmatroska::KaxInternalBlock;
using libmatroska::KaxReferenceBlock;
using libmatroska::KaxSimpleBlock;

namespace {

const std::uint8_t* FirstFrame(KaxInternalBlock& block) {
  if (const auto* borrowed = dynamic_cast<const BorrowedBlock*>(&block)) return borrowed->FirstFrame();
  return block.NumberFrames() == 0 ? nullptr : block.GetBuffer(0).Buffer();
}

}  // namespace

bool ClusterDelivery::DeliverCluster(ElementWalker& walker, KaxCluster* cluster) {
  if (cluster == nullptr) {
    LogText("CEbmlScanner::DeliverCluster !cluster exiting");
    return false;
  }
  m_clock.BeginCluster();
  bool goesOn = true;
  walker.ReadEachChild(*cluster, MasterReader::Frames::kRead,
                       [&](libebml::EbmlElement& child) { return goesOn = DeliverNext(child); });
  return goesOn;
}

bool ClusterDelivery::DeliverNext(libebml::EbmlElement& child) {
  if (m_eventsPending()) {
    LogText("CEbmlScanner::DeliverCluster exiting");
    return false;
  }
  return DeliverChild(child);
}

bool ClusterDelivery::DeliverChild(libebml::EbmlElement& child) {
  if (const auto* timecode = ElementAs<KaxClusterTimecode>(&child)) {
    m_clock.SetTimecode(*timecode);
    LogFormat("cluster time: %s", std::to_string(m_clock.ClusterTime()).c_str());
  } else if (auto* block = ElementAs<KaxSimpleBlock>(&child)) {
    if (!DeliverSimpleBlock(*block)) {
      LogText("DeliverSimpleBlock failed exiting");
      return false;
    }
  } else if (auto* group = ElementAs<KaxBlockGroup>(&child)) {
    if (!DeliverBlockGroup(*group)) {
      LogText("DeliverBlockGroupBlocks failed exiting");
      return false;
    }
  }
  return true;
}

bool ClusterDelivery::DeliverSimpleBlock(KaxSimpleBlock& block) {
  return DeliverFrames(block, block.IsKeyframe(), m_info.DefaultFrameDuration(block.TrackNum()));
}

bool ClusterDelivery::DeliverBlockGroup(const KaxBlockGroup& group) {
  m_groupChildren.clear();
  for (libebml::EbmlElement* child : group) {
    const bool wanted = ElementAs<KaxReferenceBlock>(child) != nullptr ||
                        ElementAs<KaxBlockDuration>(child) != nullptr || ElementAs<KaxBlock>(child) != nullptr;
    if (wanted) m_groupChildren.push_back(child);
  }
  return DeliverBlockGroupBlocks(m_groupChildren);
}

bool ClusterDelivery::DeliverBlockGroupBlocks(std::span<libebml::EbmlElement* const> children) {
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

// The frames of a block lie one after the other.
bool ClusterDelivery::DeliverFrames(KaxInternalBlock& block, bool keyFrame, std::uint64_t duration) {
  // A larger number must not pass for that of another track.
  if (block.TrackNum() > std::numeric_limits<std::uint32_t>::max()) return true;
  FrameInfo frame;
  frame.keyFrame = keyFrame;
  frame.trackNumber = static_cast<std::uint32_t>(block.TrackNum());
  frame.start = m_clock.TimeOf(block);
  frame.duration = duration;
  frame.data = FirstFrame(block);
  m_frames.clear();
  for (unsigned int index = 0; index < block.NumberFrames(); ++index) {
    frame.size = static_cast<std::uint32_t>(block.GetFrameSize(index));
    m_frames.push_back(frame);
    frame.data += frame.size;
    frame.start += duration;
  }
  return m_onFrames(m_frames);
}

}  // namespace tarvex
