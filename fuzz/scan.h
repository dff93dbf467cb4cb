// A stream read without a graph: everything of the module that a file's bytes reach before they get to a pin, on the
// calling thread. Free functions; any thread.
#pragma once

#include <cstdint>
#include <functional>

#include "framework/platform/platform.h"
#include "scanner/ebml_scanner.h"

namespace tarvex::fuzz {

struct ScanResult {
  bool opened = false;
  std::uint64_t tracks = 0;
  std::uint64_t chapters = 0;
  std::uint64_t indexEntries = 0;
  std::uint64_t frames = 0;
  std::uint32_t largestFrame = 0;  ///< bytes
  std::uint64_t sum = 0;           ///< of all bytes of the frames
};

/// Opens the stream, builds every media type, and then does `use`. What is delivered meanwhile goes through content
/// decoding and start codes and is looked at to its last byte. A refusal is a result.
ScanResult ScanStream(IAsyncReader& reader, const std::function<void(CEbmlScanner&)>& use);

/// For ScanStream: all clusters, the index, and again from the middle.
void ScanWhole(CEbmlScanner& scanner);

}  // namespace tarvex::fuzz
