// Looking for Clusters at any place of a file. Made for one search; runs on the thread that drives the scanner and
// moves the byte source's position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "scanner/elements/element_walker.h"
#include "scanner/elements/plain_walk.h"
#include "scanner/index/search_reach.h"

namespace tarvex {

struct ProbedCluster {
  std::uint64_t position = 0;  ///< absolute file offset of its identifier
  std::uint64_t end = 0;       ///< where the next element begins
  std::int64_t time = 0;       ///< its Timecode, 100 ns units
};

/// A Cluster is what begins as muxers begin one, has a Timecode, and ends where another element of the Segment begins.
/// A frame may hold such bytes too, but hardly by chance.
class ClusterProbe {
 public:
  /// Clusters lie before `limit`; `scale` is that of the file in nanoseconds. All stay while this is used.
  ClusterProbe(ElementWalker& walker, std::uint64_t limit, std::uint64_t scale, const SearchReach& reach,
               const std::function<bool()>& eventsPending)
      : m_walker(walker), m_limit(limit), m_scale(scale), m_reach(reach), m_eventsPending(eventsPending) {}

  /// The first that begins at or behind `begin` and before `end`. Nothing when there is none, and always once
  /// looking HasEnded.
  std::optional<ProbedCluster> First(std::uint64_t begin, std::uint64_t end);
  /// The one that begins there.
  std::optional<ProbedCluster> At(std::uint64_t position);
  /// The next one behind `cluster`, with nothing but other elements of the Segment between them. Nothing where other
  /// bytes follow, or the Segment ends.
  std::optional<ProbedCluster> Next(const ProbedCluster& cluster);

  /// An event is pending, or too much was looked at in vain.
  bool HasEnded() const { return m_isInterrupted || m_lookedAt > m_reach.budget; }
  bool IsInterrupted() const { return m_isInterrupted; }

 private:
  std::span<const std::uint8_t> Bytes(std::uint64_t position, std::size_t atLeast, std::size_t chunk);
  std::optional<std::uint64_t> EndOf(std::uint64_t dataStart, const ElementHeader& header);
  std::optional<std::uint64_t> EndOfUnknownSize(std::uint64_t dataStart);
  std::optional<ElementHeader> SiblingAt(std::uint64_t position);
  bool IsFollowedBySibling(std::uint64_t end);

  ElementWalker& m_walker;
  const std::uint64_t m_limit;
  const std::uint64_t m_scale;
  const SearchReach& m_reach;
  const std::function<bool()>& m_eventsPending;
  ReadStep m_step;
  std::uint64_t m_lookedAt = 0;  // bytes
  bool m_isInterrupted = false;
};

}  // namespace tarvex
