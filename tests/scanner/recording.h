// A file in memory, opened by a scanner that reads as the filter does, and what the scanner delivers of it. Owned by
// one test.
#pragma once

#include <cstdint>
#include <vector>

#include "framework/message_error.h"
#include "scanner/ebml_scanner.h"
#include "scanner/source/read_ahead_reader.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/memory_reader.h"

namespace tarvex::test {

struct RecordedFrame {
  std::int64_t start = 0;
  ByteString data;

  friend bool operator==(const RecordedFrame&, const RecordedFrame&) = default;
};

class OpenFile : public CMatroskaCallback {
 public:
  explicit OpenFile(ByteString bytes) : reader(std::move(bytes)) {
    scanner.SetCallback(this);
    scanner.CanProcess(readAhead.Get());
  }
  virtual ~OpenFile() = default;

  void OnTrack(std::uint32_t /*heapIndex*/) override {}
  bool ProcessEvents() override { return eventAfter >= 0 && eventAfter-- == 0; }
  bool OnData(const FrameInfo& frame) override {
    if (framesToTake >= 0 && framesToTake-- == 0) return false;
    frames.push_back({static_cast<std::int64_t>(frame.start), ByteString(frame.data, frame.data + frame.size)});
    return true;
  }

  MemoryReader reader;
  ComPtr<ReadAheadReader> readAhead = MakeCom<ReadAheadReader>(&reader);
  std::vector<RecordedFrame> frames;
  std::int64_t framesToTake = -1;  ///< the one after these is refused
  std::int64_t eventAfter = -1;    ///< polls that are answered no
  CEbmlScanner scanner;
};

/// A file with sound as track 1 and these Clusters and other elements.
inline ByteString FileOf(const ByteString& elements) {
  return MatroskaFile(Join({Element(id::kInfo, Unsigned(id::kTimecodeScale, 1000000)),
                            Element(id::kTracks, TrackEntry(1, 2, "A_TEST")), elements}));
}

}  // namespace tarvex::test
