// Finds the entries that each Cluster has in a seek index. Made for one index; runs on the thread that drives the
// scanner.
#pragma once

#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "scanner/elements/block_head.h"
#include "scanner/elements/cluster_clock.h"
#include "scanner/elements/element_walker.h"
#include "scanner/elements/plain_walk.h"
#include "scanner/file/matroska_info.h"
#include "scanner/index/index_entries.h"

namespace tarvex {

class ClusterIndexer {
 public:
  /// All stay while this is used.
  ClusterIndexer(ElementWalker& walker, const CMatroskaInfo& info, IndexEntries& index);

  /// Adds one entry for each key frame of the indexed track. Reads all of the Cluster but its frames. Afterwards the
  /// walker stands where the search for the next Cluster begins.
  void Add(libmatroska::KaxCluster& cluster);

 private:
  bool AddPlain(const libmatroska::KaxCluster& cluster);
  bool AddPlainChild(PlainWalk& walk, const ElementHeader& header);
  bool AddPlainGroup(PlainWalk walk);
  bool AddPlainBlock(const BlockHead& block, bool isKeyFrame);
  void AddChild(const libebml::EbmlElement& child);
  void AddGroup(const libmatroska::KaxBlockGroup& group);
  void AddBlock(const libmatroska::KaxInternalBlock& block);

  ElementWalker& m_walker;
  const std::uint64_t m_track;
  IndexEntries& m_index;
  ClusterClock m_clock;
  ReadStep m_step;
  std::vector<SeekPoint> m_found;  // in a Cluster of which it is not known yet that it is plain
  std::uint64_t m_position = 0;    // of the Cluster
};

}  // namespace tarvex
