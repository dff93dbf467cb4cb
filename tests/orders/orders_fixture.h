// What the tests of orders share: a graph over a film, and what must never happen in one.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

#include "tests/support/film.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {

inline constexpr LONG kEcErrorAbort = 3;
/// A stop that takes longer than this has waited for something that does not end by itself.
inline constexpr auto kLongestStop = std::chrono::seconds(5);

class OrdersTest : public testing::Test {
 protected:
  void TearDown() override {
    m_graph.reset();
    m_source.Reset();
    EXPECT_TRUE(ModuleBecomesIdle()) << "something of the module is left";
  }

  /// In a new graph, with a pin for every kind of track and a sink for every pin.
  void Open(const FilmShape& shape, SinkKind sinks) {
    m_graph.emplace();
    m_source = MakeFilm(shape);
    ASSERT_EQ(m_graph->Open(m_source.Get()), S_OK);
    ASSERT_EQ(m_graph->ConnectSinks(sinks), S_OK);
  }

  HRESULT Seek(REFERENCE_TIME start) {
    return QueryFor<IMediaSeeking>(m_graph->OutputPins().front().Get())
        ->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
  }
  bool EverySinkHasASample() {
    for (const auto& sink : m_graph->Sinks()) {
      if (!sink->WaitForSample(kPatience)) return false;
    }
    return true;
  }
  void ExpectQuickStop() {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(SUCCEEDED(m_graph->Stop()));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, kLongestStop);
  }
  /// Neither the application nor a renderer was told that something is over.
  void ExpectNoEnd() {
    EXPECT_FALSE(m_graph->WaitForEvent(kEcErrorAbort, 20));
    for (const auto& sink : m_graph->Sinks()) EXPECT_EQ(sink->CountOf(SinkEvent::Kind::kEndOfStream), 0U);
  }

  std::optional<TestGraph> m_graph;
  ComPtr<SourceFilter> m_source;
};

}  // namespace tarvex::test
