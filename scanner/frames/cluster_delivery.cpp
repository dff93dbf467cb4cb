#include "scanner/frames/cluster_delivery.h"

#include <matroska/KaxBlockData.h>
#include <matroska/KaxSemantic.h>

#include <algorithm>
#include <limits>
#include <string>
#include <typeinfo>

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

// Few enough that what they take of a ring is little: it is better for the caches when a ring is soon empty again.
constexpr std::size_t kMostGathered = 32;
constexpr std::size_t kMostBytesGathered = 8 * 1024;

const std::uint8_t* FirstFrame(KaxInternalBlock& block) {
  return block.NumberFrames() == 0 ? nullptr : block.GetBuffer(0).Buffer();
}

}  // namespace

bool ClusterDelivery::DeliverCluster(ElementWalker& walker, KaxCluster* cluster) {
  if (cluster == nullptr) {
    LogText("CEbmlScanner::DeliverCluster !cluster exiting");
    return false;
  }
  m_clock.BeginCluster();
  m_goesOn = true;
  walker.ReadEachChild(*cluster, MasterReader::Frames::kRead, *this);
  return m_goesOn;
}

// Only the bytes of a borrowed block outlast the call.
bool ClusterDelivery::Show(libebml::EbmlElement& child) {
  if (typeid(child) == typeid(BorrowedBlock)) {
    auto& block = static_cast<BorrowedBlock&>(child);
    AddSimpleBlock(block, block.FirstFrame());
    m_blockEnds.push_back(m_frames.size());
    m_bytesGathered += block.GetSize();
    const bool isMore = m_frames.size() < kMostGathered && m_bytesGathered < kMostBytesGathered;
    m_goesOn = isMore || DeliverGathered();
  } else {
    m_goesOn = DeliverGathered() && !IsToStop() && DeliverChild(child);
  }
  return m_goesOn;
}

bool ClusterDelivery::IsToStop() const {
  const bool isToStop = m_receiver.EventsPending();
  if (isToStop) LogText("CEbmlScanner::DeliverCluster exiting");
  return isToStop;
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
  AddSimpleBlock(block, FirstFrame(block));
  return DeliverAdded();
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
  AddFrames(*block, FirstFrame(*block), !referencesOthers, duration);
  return DeliverAdded();
}

void ClusterDelivery::AddSimpleBlock(KaxSimpleBlock& block, const std::uint8_t* data) {
  AddFrames(block, data, block.IsKeyframe(), m_info.DefaultFrameDuration(block.TrackNum()));
}

// The frames of a block lie one after the other.
void ClusterDelivery::AddFrames(KaxInternalBlock& block, const std::uint8_t* data, bool keyFrame,
                                std::uint64_t duration) {
  // A larger number must not pass for that of another track.
  if (block.TrackNum() > std::numeric_limits<std::uint32_t>::max()) return;
  FrameInfo frame;
  frame.keyFrame = keyFrame;
  frame.trackNumber = static_cast<std::uint32_t>(block.TrackNum());
  frame.start = m_clock.TimeOf(block);
  frame.duration = duration;
  frame.data = data;
  for (unsigned int index = 0; index < block.NumberFrames(); ++index) {
    frame.size = static_cast<std::uint32_t>(block.GetFrameSize(index));
    m_frames.push_back(frame);
    frame.data += frame.size;
    frame.start += duration;
  }
}

bool ClusterDelivery::DeliverGathered() {
  if (m_frames.size() > 1) m_receiver.OnComing(m_frames);
  const std::span<const FrameInfo> frames = m_frames;
  std::size_t begin = 0;
  const bool goesOn = std::ranges::all_of(m_blockEnds, [&](std::size_t end) {
    if (IsToStop()) return false;
    if (m_receiver.OnFrames(frames.subspan(begin, end - begin))) return begin = end, true;
    LogText("DeliverSimpleBlock failed exiting");
    return false;
  });
  m_frames.clear();
  m_blockEnds.clear();
  m_bytesGathered = 0;
  return goesOn;
}

// The frames of one block.
bool ClusterDelivery::DeliverAdded() {
  if (m_frames.size() > 1) m_receiver.OnComing(m_frames);
  const bool goesOn = m_receiver.OnFrames(m_frames);
  m_frames.clear();
  return goesOn;
}

}  // namespace tarvex
