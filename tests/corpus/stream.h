// What one pin delivered of a file, in the manifest's terms. Values and free functions; any thread.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/sink_filter.h"

namespace tarvex::test {

/// Times in 100 ns units; the payload is that after content decoding.
struct Frame {
  std::int64_t time = 0;
  std::int64_t duration = 0;
  bool key = false;
  std::uint32_t size = 0;
  std::string sha1;

  std::int64_t End() const { return time + duration; }
  friend bool operator==(const Frame&, const Frame&) = default;
};
using Frames = std::vector<Frame>;

/// A line of the manifest's sums: "time duration key size sha1\n".
std::string LineOf(const Frame& frame);
/// What the manifest has of a track: all of its frames, or the first few.
Frames ListedFrames(const nlohmann::json& frames);

/// Since the last flush, with times of the file.
struct Stream {
  Frames frames;
  std::int64_t origin = 0;  ///< the segment's start
  std::string order;        ///< n a segment, s a sample, e the end, + a discontinuity
};
Stream StreamOf(SinkFilter& sink);
/// The order of so many samples as it must be.
inline std::string OrderOf(std::size_t samples) {
  return samples == 0 ? "e" : "ns+" + std::string(samples - 1, 's') + "e";
}

}  // namespace tarvex::test
