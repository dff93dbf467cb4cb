// One pass over a stream without a graph: everything of the module that a file's bytes reach before they
// get to a pin. Free function; any thread.
#pragma once

#include <cstdint>
#include <vector>

namespace tarvex::test {

struct ScanResult {
  bool opened = false;
  bool stopped = false;  ///< by a MessageError
  std::uint64_t frames = 0;
  std::uint64_t sum = 0;  ///< of all bytes of the frames
  std::int64_t peak = 0;  ///< bytes that were allocated at once, without the stream's own
  std::int64_t left = 0;  ///< bytes that stayed allocated
};

/// Opens, builds every media type, walks all clusters with content decoding and start codes, makes the
/// index, walks again from the middle. A refusal is a result.
ScanResult ScanWhole(std::vector<std::uint8_t> bytes);

}  // namespace tarvex::test
