// The time of a Cluster's blocks. Owned by whoever goes through the Clusters, on that thread.
#pragma once

#include <matroska/KaxBlock.h>
#include <matroska/KaxClusterData.h>

#include <cstdint>

#include "scanner/block_time.h"

namespace tarvex {

/// Blocks in front of the Timecode count from zero.
class ClusterClock {
 public:
  /// `timecodeScale` in nanoseconds.
  explicit ClusterClock(std::uint64_t timecodeScale) : m_scale(timecodeScale) {}

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

}  // namespace tarvex
