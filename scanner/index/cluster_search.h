// Finds where to begin for a start time in a file without Cues, and reads only the places where that time can be. Made
// for one start; runs on the worker, which has the scanner to itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "scanner/elements/element_walker.h"
#include "scanner/file/matroska_info.h"
#include "scanner/index/cluster_indexer.h"
#include "scanner/index/cluster_probe.h"
#include "scanner/index/index_entries.h"
#include "scanner/index/known_clusters.h"
#include "scanner/index/search_reach.h"

namespace tarvex {

/// An index of all Clusters would have one entry for each key frame of one track. The times of these entries rise in
/// every file that is not damaged, and so do those of the Clusters. So a few Clusters are enough to find the last entry
/// not after a time, and the one before it. Where the times do not rise, the answer is that everything has to be read.
class ClusterSearch {
 public:
  enum class Outcome : std::uint8_t {
    kFound,        ///< begin at the position
    kInterrupted,  ///< an event is pending
    kReadAll,      ///< only an index of everything tells
  };
  struct Result {
    Outcome outcome = Outcome::kReadAll;
    std::uint64_t position = 0;  ///< absolute file offset of a Cluster
  };

  /// `known` is what earlier searches found, and grows. `streamLength` in bytes. All stay while this is used.
  ClusterSearch(ElementWalker& walker, const libmatroska::KaxSegment& segment, const CMatroskaInfo& info,
                std::uint64_t streamLength, KnownClusters& known, const SearchReach& reach,
                const std::function<bool()>& eventsPending);

  /// For a start at `time`, 100 ns units, above 0: the same as FindIndexEntry in an index of everything, and one entry
  /// further back.
  Result Find(std::uint64_t time);

 private:
  /// The entries that a walk has seen.
  struct Seen {
    std::uint64_t first = 0;       // position of the first of all
    std::uint64_t last = 0;        // position of the last not after the time
    std::uint64_t beforeLast = 0;  // position of the one before
    std::size_t count = 0;         // of those not after the time
    bool hasAny = false;

    /// False: this one is after the time.
    bool Add(std::uint64_t position, bool isAfter);
  };

  bool MayBeSearched(std::uint64_t time) const;
  bool Prepare();
  std::optional<ProbedCluster> Nearest(std::int64_t time);
  std::optional<std::uint64_t> AheadOf(const ProbedCluster& low, std::uint64_t gap, std::int64_t time,
                                       std::optional<std::int64_t> highTime) const;
  std::optional<std::uint64_t> KnownAnchor(std::uint64_t position, std::int64_t time) const;
  std::optional<std::uint64_t> Anchor(const ProbedCluster& nearest, std::uint64_t reach);
  std::optional<Seen> Walk(std::uint64_t from, std::uint64_t through, std::int64_t time);
  const KnownCluster* Read(std::uint64_t position);
  std::optional<ProbedCluster> Probe(std::uint64_t begin, std::uint64_t end);
  std::uint64_t Front() const { return m_known.Marks().front().position; }
  Result Failed() const;

  ElementWalker& m_walker;
  const libmatroska::KaxSegment& m_segment;
  const CMatroskaInfo& m_info;
  const std::uint64_t m_streamLength;
  KnownClusters& m_known;
  const SearchReach& m_reach;
  const std::function<bool()>& m_eventsPending;
  ClusterProbe m_probe;
  IndexEntries m_entries;  // of the Cluster that is read
  ClusterIndexer m_indexer;
  bool m_isInterrupted = false;
  bool m_isContradictory = false;
};

}  // namespace tarvex
