// What is known so far of a file without Cues: Clusters whose time was looked at, and those whose entries of the seek
// index were read. Owned by the scanner while the file is open; one thread at a time.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "scanner/index/cluster_probe.h"

namespace tarvex {

struct KnownCluster {
  static constexpr std::uint64_t kNone = std::numeric_limits<std::uint64_t>::max();

  std::uint64_t next = kNone;       ///< where the Cluster behind it is
  std::vector<std::int64_t> times;  ///< of its entries, 100 ns units, in file order
};

class KnownClusters {
 public:
  /// False: it contradicts what is known. The times of Clusters rise, and none lies within another.
  bool AddMark(const ProbedCluster& cluster);
  /// Clusters in file order, the first of the file among them.
  const std::vector<ProbedCluster>& Marks() const { return m_marks; }

  /// When there are too many, others are forgotten.
  void Add(std::uint64_t position, KnownCluster cluster);
  /// Null when its entries have not been read. Valid until one is added.
  const KnownCluster* Find(std::uint64_t position) const;
  /// The Cluster in front of that one, if it is known; else the same.
  std::uint64_t Before(std::uint64_t position) const;

  void Clear();

 private:
  std::vector<ProbedCluster> m_marks;
  std::map<std::uint64_t, KnownCluster> m_clusters;  // by position
  std::size_t m_entries = 0;                         // of all of them
};

}  // namespace tarvex
