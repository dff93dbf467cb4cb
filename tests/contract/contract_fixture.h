// What the contract tests share: an open graph over a small file made in memory, and the check that
// nothing of the module is left when a test ends.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "filter/interface_ids.h"
#include "tests/support/movie.h"
#include "tests/support/source_dir.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {

/// Ends every test with the question whether the module could be unloaded.
class ContractTest : public testing::Test {
 protected:
  void TearDown() override { EXPECT_TRUE(ModuleBecomesIdle()) << "something of the module is left"; }
};

/// With a graph of one splitter.
class GraphTest : public ContractTest {
 protected:
  void TearDown() override {
    m_source.Reset();
    if (m_graph) {
      m_graph->Stop();
      EXPECT_TRUE(SUCCEEDED(m_graph->DisconnectAll()));
    }
    m_graph.reset();
    ContractTest::TearDown();
  }

  /// In a new graph, every track with a pin of its own.
  void OpenMovie(const MovieShape& shape) { OpenBytes(MakeMovie(shape)); }
  void OpenBytes(std::vector<std::uint8_t> bytes) {
    m_graph.emplace();
    ASSERT_EQ(m_graph->SeparatePins(true), S_OK);
    m_source = SourceFilter::FromBytes(std::move(bytes));
    ASSERT_EQ(m_graph->Open(m_source.Get()), S_OK);
  }

  TestGraph& Graph() { return *m_graph; }
  IBaseFilter* Splitter() { return m_graph->Splitter(); }
  template <class I>
  ComPtr<I> Ask() {
    return QueryFor<I>(Splitter());
  }
  ComPtr<IPin> Output(std::size_t index) { return Graph().OutputPins().at(index); }

  std::optional<TestGraph> m_graph{std::in_place};
  ComPtr<SourceFilter> m_source;
};

/// With one in which the movie is open.
class OpenedTest : public GraphTest {
 protected:
  void SetUp() override { OpenMovie({}); }
};

inline std::string CorpusFile(const std::string& name) {
  return SystemPath(SourceDir() + "/tests/data/corpus/gen/" + name);
}

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
