// The order of the frames in a Matroska file, read with a few lines that share nothing with the scanner:
// enough for files that are well formed. Pure; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarvex::test {

struct BlockPlace {
  std::uint64_t cluster = 0;  ///< file offset of its Cluster
  std::uint64_t track = 0;
  std::size_t frames = 0;
};

/// The blocks in file order; empty when the file is not so simple.
std::vector<BlockPlace> BlockOrder(std::span<const std::uint8_t> file);

}  // namespace tarvex::test
