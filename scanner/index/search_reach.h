// How far a search for a time in a file without Cues goes. Values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvex {

/// Bytes. Tests take smaller ones, so that small files do.
struct SearchReach {
  /// A shorter file is read whole: that takes no longer than a search and leaves nothing uncertain.
  std::uint64_t smallestFile = std::uint64_t{16} << 20;
  /// The first piece that is read where a Cluster is looked for, and the later ones.
  std::size_t firstChunk = std::size_t{128} << 10;
  std::size_t chunk = std::size_t{1} << 20;
  /// So near to the wanted time the search ends: walking over this much is as quick.
  std::uint64_t closest = std::uint64_t{2} << 20;
  /// A search that has looked at so much, or walked over so much, gives up, and everything is read instead.
  std::uint64_t budget = std::uint64_t{192} << 20;
};

}  // namespace tarvex
