#include "tests/scanner/recording.h"

namespace tarvex::test {

bool RecordingCallback::OnData(const FrameInfo& frame) {
  if (framesToTake >= 0 && framesToTake-- == 0) return false;
  frames.push_back({frame.keyFrame, frame.trackNumber, static_cast<std::int64_t>(frame.start),
                    static_cast<std::int64_t>(frame.duration), ByteString(frame.data, frame.data + frame.size)});
  return true;
}

OpenFile::OpenFile(ByteString bytes, Reading reading) : reader(std::move(bytes)) {
  if (reading == Reading::kAhead) readAhead = MakeCom<ReadAheadReader>(&reader);
  scanner.SetCallback(&callback);
  scanner.CanProcess(readAhead ? static_cast<IAsyncReader*>(readAhead.Get()) : &reader);
}

std::vector<std::int64_t> OpenFile::StartTimes() const {
  std::vector<std::int64_t> times;
  for (const RecordedFrame& frame : callback.frames) times.push_back(frame.start);
  return times;
}

ByteString Headers(std::uint64_t trackType, const ByteString& trackChildren) {
  return Join({Element(id::kInfo, Unsigned(id::kTimecodeScale, 1000000)),
               Element(id::kTracks, TrackEntry(1, trackType, "A_TEST", trackChildren))});
}

ByteString FileOf(const ByteString& clusters, const ByteString& headers) {
  return MatroskaFile(Join({headers, clusters}));
}

}  // namespace tarvex::test
