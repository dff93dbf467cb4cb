// What is measured of one playback, and the measuring. Values; main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/play/playback.h"

namespace tarvex::bench {

enum class Extent {
  kRaw,    ///< no splitter: read the file in blocks of 1 MiB, as fast as any reader of it can be
  kOpen,   ///< connect the source, nothing more
  kFirst,  ///< until the first sample; sinks hold theirs
  kSeeks,  ///< the same, then the seeks, one after another
  kWhole   ///< until every pin has had its end of stream
};

struct MeasureOptions {
  std::string file;
  SourceKind source = SourceKind::kCounting;
  Extent extent = Extent::kWhole;
  bool separatePins = false;  ///< a pin for every track instead of one for every kind
  unsigned readDelay = 0;     ///< microseconds that each read of a counting source takes besides
  /// Seconds.
  std::vector<double> seeks;
  /// So many more, spread over the duration in an order that is mixed and always the same.
  unsigned spreadSeeks = 0;
};

struct MeasuredPin {
  std::string name;
  std::uint64_t samples = 0;
  std::uint64_t bytes = 0;
};

struct MeasuredSeek {
  double target = 0;  ///< seconds
  double first = 0;   ///< milliseconds from the call to the first sample at any sink
  ReadCount reads;    ///< between the two
};

/// Times are milliseconds and count from when graph, source and splitter are there, unconnected.
struct Measurement {
  double made = 0;  ///< what that took before; loading the module is in it
  double opened = 0;
  ReadCount openReads;
  std::optional<double> first;
  ReadCount firstReads;  ///< opening included
  std::optional<double> ended;
  ReadCount allReads;
  CpuTimes cpu;                  ///< to the end, making included
  std::uint64_t peakBytes = 0;   ///< resident
  std::uint64_t startBytes = 0;  ///< resident before the beginning
  std::uint64_t ringBytes = 0;   ///< resident where samples lay
  std::uint64_t heapBefore = 0;
  std::uint64_t heapOpened = 0;
  std::uint64_t heapFirst = 0;  ///< at the first sample, or behind the last seek
  std::vector<MeasuredPin> pins;
  std::vector<MeasuredSeek> seeks;
};

/// Throws std::runtime_error, also when something does not come within minutes.
Measurement Measure(const MeasureOptions& options);

}  // namespace tarvex::bench
