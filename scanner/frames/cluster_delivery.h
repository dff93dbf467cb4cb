// Splitting a Cluster into frames. Made by the scanner for one pass; runs on the worker thread.
#pragma once

#include <ebml/EbmlElement.h>
#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "scanner/block_time.h"
#include "scanner/file/matroska_info.h"
#include "scanner/frames/frame_info.h"

namespace tarvex {

/// The time of a Cluster's blocks. Blocks in front of its Timecode count from zero.
class CClusterClock {
 public:
  /// `timecodeScale` in nanoseconds.
  explicit CClusterClock(std::uint64_t timecodeScale) : m_scale(timecodeScale) {}

  void BeginCluster() { m_clusterTime = 0; }
  void SetTimecode(const libmatroska::KaxClusterTimecode& timecode) { SetTimecode(timecode.GetValue()); }
  void SetTimecode(std::uint64_t ticks) { m_clusterTime = ticks * m_scale; }

  /// 100 ns units.
  std::uint64_t ClusterTime() const { return m_clusterTime / kNanosecondsPerUnit; }
  /// 100 ns units; before zero the two's complement.
  std::uint64_t TimeOf(const libmatroska::KaxInternalBlock& block) const {
    return TimeOf(block.GetRelativeTimestamp());
  }
  std::uint64_t TimeOf(std::int16_t relative) const { return BlockUnits(m_clusterTime, relative, m_scale); }

 private:
  const std::uint64_t m_scale;
  std::uint64_t m_clusterTime = 0;  // nanoseconds
};

class CElementWalker;

class CClusterDelivery {
 public:
  using OnFrames = std::function<bool(std::span<const FrameInfo>)>;

  /// The three stay while this is used. `onFrames` takes the frames of a block and answers false to stop,
  /// `eventsPending` true to stop.
  CClusterDelivery(const CMatroskaInfo& info, const OnFrames& onFrames, const std::function<bool()>& eventsPending)
      : m_info(info),
        m_onFrames(onFrames),
        m_eventsPending(eventsPending),
        m_timecodeScale(info.TimecodeScale()),
        m_clock(m_timecodeScale) {}

  /// Reads `cluster`, at whose data `walker` stands, and delivers each child before it reads the next. Null is refused.
  /// False: stop.
  bool DeliverCluster(CElementWalker& walker, libmatroska::KaxCluster* cluster);
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
  CClusterClock m_clock;
  // Kept for their room.
  std::vector<libebml::EbmlElement*> m_groupChildren;
  std::vector<FrameInfo> m_frames;
};

}  // namespace tarvex
