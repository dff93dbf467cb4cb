// What the contract tests share: an open graph over a small file made in memory, and the check that
// nothing of the module is left when a test ends.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/movie.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {

/// Ends every test with the question whether the module could be unloaded.
class ContractTest : public testing::Test {
 protected:
  void TearDown() override { EXPECT_TRUE(ModuleBecomesIdle()) << "something of the module is left"; }
};

/// With a graph in which the movie is open.
class OpenedTest : public ContractTest {
 protected:
  void SetUp() override { OpenMovie({}); }
  void TearDown() override {
    m_source.Reset();
    m_graph.reset();
    ContractTest::TearDown();
  }

  void OpenMovie(const MovieShape& shape) {
    m_graph.emplace();
    ASSERT_EQ(m_graph->SeparatePins(true), S_OK);
    m_source = CSourceFilter::FromBytes(MakeMovie(shape));
    ASSERT_EQ(m_graph->Open(m_source.Get()), S_OK);
  }

  TestGraph& Graph() { return *m_graph; }
  ComPtr<IPin> Output(std::size_t index) { return Graph().OutputPins().at(index); }

  std::optional<TestGraph> m_graph;
  ComPtr<CSourceFilter> m_source;
};

/// The media type that the pin offers first.
inline CMediaType TypeOf(IPin* pin) {
  ComPtr<IEnumMediaTypes> list;
  AM_MEDIA_TYPE* type = nullptr;
  EXPECT_EQ(pin->EnumMediaTypes(list.Put()), S_OK);
  EXPECT_EQ(list->Next(1, &type, nullptr), S_OK);
  const MediaTypePtr owner(type);
  return type == nullptr ? CMediaType() : CMediaType(*type);
}

inline ComPtr<IPin> PeerOf(IPin* pin) {
  ComPtr<IPin> peer;
  pin->ConnectedTo(peer.Put());
  return peer;
}

inline FILTER_STATE StateOf(IBaseFilter* filter) {
  FILTER_STATE state = State_Stopped;
  EXPECT_EQ(filter->GetState(0, &state), S_OK);
  return state;
}

}  // namespace tarvex::test
