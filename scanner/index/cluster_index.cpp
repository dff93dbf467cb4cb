#include "scanner/index/cluster_index.h"

#include "scanner/index/cluster_indexer.h"

namespace tarvex {

std::optional<std::vector<SeekPoint>> IndexFromClusters(CElementWalker& walker, const libmatroska::KaxSegment& segment,
                                                        const CMatroskaInfo& info,
                                                        const std::function<bool()>& eventsPending) {
  CIndexEntries index;
  CClusterIndexer indexer(walker, info, index);
  while (const auto cluster = walker.FindNextCluster(segment)) {
    if (eventsPending()) return std::nullopt;
    indexer.Add(*cluster);
  }
  return index.Take();
}

}  // namespace tarvex
