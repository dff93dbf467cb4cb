// A scanner callback that keeps what it is given. Owned by one test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/message_error.h"
#include "scanner/ebml_scanner.h"
#include "scanner/source/read_ahead_reader.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/memory_reader.h"

namespace tarvex::test {

struct RecordedFrame {
  bool key = false;
  std::uint32_t track = 0;
  std::int64_t start = 0;
  std::int64_t duration = 0;
  ByteString data;

  friend bool operator==(const RecordedFrame&, const RecordedFrame&) = default;
};

class RecordingCallback : public CMatroskaCallback {
 public:
  std::vector<RecordedFrame> frames;
  std::int64_t framesToTake = -1;  ///< the one after these is refused
  std::int64_t eventAfter = -1;    ///< polls that are answered no

  virtual ~RecordingCallback() = default;
  void OnTrack(std::uint32_t /*heapIndex*/) override {}
  bool ProcessEvents() override { return eventAfter >= 0 && eventAfter-- == 0; }
  bool OnData(const FrameInfo& frame) override;
};

/// A file in memory, opened.
struct OpenFile {
  enum class Reading : std::uint8_t { kPlain, kAhead };  ///< kAhead: as the filter reads

  explicit OpenFile(ByteString bytes, Reading reading = Reading::kPlain);

  /// Delivers everything; whether that was interrupted.
  bool Process() { return scanner.Process(); }
  std::vector<std::int64_t> StartTimes() const;

  MemoryReader reader;
  ComPtr<ReadAheadReader> readAhead;  // null when it reads plainly
  RecordingCallback callback;
  CEbmlScanner scanner;
};

/// Info with the default scale and one track with number 1.
ByteString Headers(std::uint64_t trackType = 2, const ByteString& trackChildren = {});
/// A file of these headers and the given Clusters.
ByteString FileOf(const ByteString& clusters, const ByteString& headers = Headers());

/// The text of the MessageError that `action` throws, or nothing of one.
template <class Action>
std::string MessageOf(Action&& action) {
  try {
    action();
  } catch (const MessageError& error) {
    return error.what();
  }
  return {};
}

}  // namespace tarvex::test
