// See stream.h.
#include "tests/corpus/stream.h"

#include <algorithm>

namespace tarvex::test {

std::string LineOf(const Frame& frame) {
  return std::to_string(frame.time) + ' ' + std::to_string(frame.duration) + ' ' + (frame.key ? '1' : '0') + ' ' +
         std::to_string(frame.size) + ' ' + frame.sha1 + '\n';
}

Frames ListedFrames(const nlohmann::json& frames) {
  Frames listed;
  for (const auto& row : frames.contains("frames") ? frames.at("frames") : frames.at("first")) {
    listed.push_back({row[0], row[1], row[2] != 0, row[3], row[4]});
  }
  return listed;
}

Stream StreamOf(SinkFilter& sink) {
  using Kind = SinkEvent::Kind;
  std::vector<SinkEvent> events = sink.Events();
  const auto flush =
      std::find_if(events.rbegin(), events.rend(), [](const auto& event) { return event.kind == Kind::kEndFlush; });
  events.erase(events.begin(), flush.base());
  Stream stream;
  for (const SinkEvent& event : events) {
    if (event.kind == Kind::kNewSegment) stream.origin = event.start;
    stream.order += event.kind == Kind::kNewSegment ? 'n' : event.kind == Kind::kSample ? 's' : 'e';
    if (event.kind != Kind::kSample) continue;
    if (event.discontinuity) stream.order += '+';
    if (event.preroll != (event.start < 0 && event.stop < 0)) stream.order += "wrong preroll";
    stream.frames.push_back({event.start + stream.origin, event.stop - event.start, event.key, event.size, event.sha1});
  }
  return stream;
}

}  // namespace tarvex::test
