// One entry of the seek index: where a Cluster begins and the time of the frame it was indexed for. A value.
#pragma once

#include <cstdint>

namespace tarvex {

struct SeekPoint {
  std::uint64_t position = 0;  ///< absolute file offset of the Cluster's ID, bytes
  std::uint64_t time = 0;      ///< 100 ns units; a time before zero is its two's complement

  friend bool operator==(const SeekPoint&, const SeekPoint&) = default;
};

}  // namespace tarvex
