// What the tests of orders share: a graph over a film, what has come of its last segment, and what must never happen.
#pragma once

#include <algorithm>
#include <chrono>

#include "tests/support/graph_test.h"

namespace tarvex::test {

class OrdersTest : public GraphTest {
 protected:
  /// In a new graph, with a pin for every kind of track and a sink for every pin.
  void OpenFilm(const FilmShape& shape, SinkKind sinks) {
    Open(MakeFilm(shape), false);
    ASSERT_EQ(Graph().ConnectSinks(sinks), S_OK);
  }
  /// The last segment that has begun since the sink was cleared, and its samples behind it; empty before.
  static std::vector<SinkEvent> LastSegmentOf(SinkFilter& sink) {
    std::vector<SinkEvent> events = sink.Events();
    const auto last = std::find_if(events.rbegin(), events.rend(),
                                   [](const SinkEvent& event) { return event.kind == SinkEvent::Kind::kNewSegment; });
    events.erase(events.begin(), last == events.rend() ? events.end() : last.base() - 1);
    return events;
  }
  static bool IsShown(const SinkEvent& event) { return event.kind == SinkEvent::Kind::kSample && event.stop > 0; }
  /// The same, when a sample of it came that is to be shown.
  static std::vector<SinkEvent> ShownSegmentOf(SinkFilter& sink) {
    std::vector<SinkEvent> segment;
    EXPECT_TRUE(Eventually([&] {
      segment = LastSegmentOf(sink);
      return std::ranges::any_of(segment, IsShown);
    }));
    return segment;
  }
  /// One that takes longer has waited for something that does not end by itself.
  void ExpectQuickStop() {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(kPatience));
  }
  /// Neither the application nor a renderer was told that something is over.
  void ExpectNoEnd() {
    EXPECT_FALSE(IsAborted());
    for (const auto& sink : Graph().Sinks()) EXPECT_EQ(sink->CountOf(SinkEvent::Kind::kEndOfStream), 0U);
  }
};

}  // namespace tarvex::test
