// What the pins must deliver after a seek, worked out from a list of frames: a plain model without threads,
// queues or files. Used by one test at a time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/corpus/manifest.h"

namespace tarvex::test {

struct ModelFrame {
  std::uint64_t cluster = 0;  ///< file offset
  std::size_t pin = 0;
  ManifestFrame frame;
};

struct ModelPin {
  bool isVideo = false;
};

/// Times relative to the segment.
struct ModelSample {
  std::int64_t start = 0;
  std::int64_t stop = 0;
  bool key = false;
  std::string sha1;

  friend bool operator==(const ModelSample&, const ModelSample&) = default;
};

struct ModelStream {
  std::vector<ModelSample> samples;
  std::int64_t segmentStart = 0;  ///< when there are samples
};

/// The range that is played, 100 ns units, and the frames from where reading begins.
struct ModelRange {
  std::int64_t start = 0;
  std::int64_t stop = 0;
};

/// Where reading begins for a start time: the Cluster of the index entry before the one that covers it;
/// 0 for the front of the file.
std::uint64_t FirstCluster(const std::vector<ManifestSeekPoint>& index, std::int64_t start, std::int64_t duration);

/// What each pin delivers. The first video pin that may choose the segment's start does.
std::vector<ModelStream> Deliver(const std::vector<ModelPin>& pins, const std::vector<ModelFrame>& frames,
                                 const ModelRange& range);

}  // namespace tarvex::test
