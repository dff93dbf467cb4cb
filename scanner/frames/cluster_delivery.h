// Splitting a Cluster into frames. Made by the scanner for one pass; runs on the worker thread.
#pragma once

#include <ebml/EbmlElement.h>
#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "scanner/elements/cluster_clock.h"
#include "scanner/file/matroska_info.h"
#include "scanner/frames/frame_info.h"

namespace tarvex {

class ElementWalker;

class ClusterDelivery {
 public:
  using OnFrames = std::function<bool(std::span<const FrameInfo>)>;

  /// The three stay while this is used. `onFrames` takes the frames of a block and answers false to stop,
  /// `eventsPending` true to stop.
  ClusterDelivery(const CMatroskaInfo& info, const OnFrames& onFrames, const std::function<bool()>& eventsPending)
      : m_info(info),
        m_onFrames(onFrames),
        m_eventsPending(eventsPending),
        m_timecodeScale(info.TimecodeScale()),
        m_clock(m_timecodeScale) {}

  /// Reads `cluster`, at whose data `walker` stands, and delivers each child before it reads the next. Null is refused.
  /// False: stop.
  bool DeliverCluster(ElementWalker& walker, libmatroska::KaxCluster* cluster);
  /// False: stop.
  bool DeliverSimpleBlock(libmatroska::KaxSimpleBlock& block);
  /// Blocks, durations and references of one group; the last block counts.
  /// False: stop.
  bool DeliverBlockGroupBlocks(std::span<libebml::EbmlElement* const> children);

 private:
  bool DeliverNext(libebml::EbmlElement& child);
  bool DeliverChild(libebml::EbmlElement& child);
  bool DeliverBlockGroup(const libmatroska::KaxBlockGroup& group);
  bool DeliverFrames(libmatroska::KaxInternalBlock& block, bool keyFrame, std::uint64_t duration);

  const CMatroskaInfo& m_info;
  const OnFrames& m_onFrames;
  const std::function<bool()>& m_eventsPending;
  const std::uint64_t m_timecodeScale;
  ClusterClock m_clock;
  // Kept for their room.
  std::vector<libebml::EbmlElement*> m_groupChildren;
  std::vector<FrameInfo> m_frames;
};

}  // namespace tarvex
