#include "scanner/index/cluster_index.h"

#include "scanner/index/cluster_indexer.h"

namespace tarvex {

std::optional<std::vector<SeekPoint>> IndexFromClusters(ElementWalker& walker, const libmatroska::KaxSegment& segment,
                                                        const CMatroskaInfo& info,
                                                        const std::function<bool()>& eventsPending) {
  IndexEntries index;
  ClusterIndexer indexer(walker, info, index);
  while (const auto cluster = walker.FindNextCluster(segment)) {
    if (eventsPending()) return std::nullopt;
    indexer.Add(*cluster);
  }
  return index.Take();
}

}  // namespace tarvex
