// Splitting a Cluster into frames. Made by the scanner for one pass; runs on the worker thread.
#pragma once

#include <ebml/EbmlElement.h>
#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>

#include <cstdint>
#include <functional>
#include <span>

#include "scanner/frame_info.h"
#include "scanner/matroska_info.h"

namespace tarvex {

/// Until a Timecode child of it is met, a Cluster's blocks count from zero.
void StartCluster(libmatroska::KaxCluster& cluster, std::uint64_t timecodeScale);

/// 100 ns units, for a block that has its Cluster; before zero the two's complement.
std::uint64_t BlockTime(const libmatroska::KaxInternalBlock& block);

class CClusterDelivery {
 public:
  /// The three stay while this is used. `onFrame` takes a frame and answers false to stop,
  /// `eventsPending` true to stop.
  CClusterDelivery(const CMatroskaInfo& info, const std::function<bool(const FrameInfo&)>& onFrame,
                   const std::function<bool()>& eventsPending)
      : m_info(info), m_onFrame(onFrame), m_eventsPending(eventsPending), m_timecodeScale(info.TimecodeScale()) {}

  /// `cluster` has been read whole; null is refused. False: stop.
  bool DeliverCluster(libmatroska::KaxCluster* cluster);
  /// The block has its Cluster. False: stop.
  bool DeliverSimpleBlock(libmatroska::KaxSimpleBlock& block);
  /// Blocks (which have their Cluster), durations and references of one group; the last block counts.
  /// False: stop.
  bool DeliverBlockGroupBlocks(std::span<libebml::EbmlElement* const> children);

 private:
  bool DeliverChild(libmatroska::KaxCluster& cluster, libebml::EbmlElement& child);
  bool DeliverBlockGroup(libmatroska::KaxCluster& cluster, libmatroska::KaxBlockGroup& group);
  bool DeliverFrames(libmatroska::KaxInternalBlock& block, bool keyFrame, std::uint64_t duration);

  const CMatroskaInfo& m_info;
  const std::function<bool(const FrameInfo&)>& m_onFrame;
  const std::function<bool()>& m_eventsPending;
  const std::uint64_t m_timecodeScale;
};

}  // namespace tarvex
