// What tests of a whole graph share: the graph, its source, and the check that nothing of the module is left when a
// test ends.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "tests/support/film.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {

inline constexpr LONG kEcErrorAbort = 3;

class GraphTest : public testing::Test {
 protected:
  void TearDown() override {
    if (m_graph && m_graph->Splitter() != nullptr) {  // not abandoned
      m_graph->Stop();
      EXPECT_TRUE(SUCCEEDED(m_graph->DisconnectAll()));
    }
    Drop();
    EXPECT_TRUE(ModuleBecomesIdle()) << "something of the module is left";
  }
  void Drop() {
    m_graph.reset();
    m_source.Reset();
  }

  /// In a new graph, with a pin for every track or for every kind of track.
  void Open(ComPtr<SourceFilter> source, bool separatePins = true) {
    m_graph.emplace();
    m_source = std::move(source);
    ASSERT_EQ(m_graph->SeparatePins(separatePins), S_OK);
    ASSERT_EQ(m_graph->Open(m_source.Get()), S_OK);
  }
  void OpenMovie(const MovieShape& shape) { Open(SourceFilter::FromBytes(MakeMovie(shape))); }

  TestGraph& Graph() { return *m_graph; }
  IBaseFilter* Splitter() { return m_graph->Splitter(); }
  template <class I>
  ComPtr<I> Ask() {
    return QueryFor<I>(Splitter());
  }
  ComPtr<IPin> Output(std::size_t index) { return m_graph->OutputPins().at(index); }
  HRESULT Seek(REFERENCE_TIME start) {
    return QueryFor<IMediaSeeking>(Output(0).Get())
        ->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
  }
  bool EverySinkHasASample() {
    for (const auto& sink : m_graph->Sinks()) {
      if (!sink->WaitForSample(kPatience)) return false;
    }
    return true;
  }
  /// The application was told that something went wrong.
  bool IsAborted() { return m_graph->WaitForEvent(kEcErrorAbort, 20); }

  std::optional<TestGraph> m_graph{std::in_place};
  ComPtr<SourceFilter> m_source;
};

}  // namespace tarvex::test
