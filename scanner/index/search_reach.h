// How far a search for a time in a file without Cues goes. Values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvex {

/// Bytes. Tests take smaller ones, so that small files do.
struct SearchReach {
  /// A shorter file is read whole, which takes no more than a search, and leaves nothing uncertain.
  std::uint64_t smallestFile = std::uint64_t{16} << 20;
  /// What is read first where a Cluster is looked for, and then at a time.
  std::size_t firstChunk = std::size_t{128} << 10;
  std::size_t chunk = std::size_t{1} << 20;
  /// No nearer to the wanted time is looked for: so much is read in passing.
  std::uint64_t closest = std::uint64_t{2} << 20;
  /// So much is looked at in one search, and as much of Clusters is walked over, before everything is read instead.
  std::uint64_t budget = std::uint64_t{192} << 20;
};

}  // namespace tarvex
