// What the tests of orders share: a graph over a film, and what must never happen in one.
#pragma once

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
