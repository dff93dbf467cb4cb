// What the filter's tests share: a graph with one splitter, the interfaces asked of it, and files of the
// corpus.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "filter/interface_ids.h"
#include "tests/support/log_capture.h"
#include "tests/support/movie.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {

inline std::string CorpusFile(const std::string& name) {
  return SystemPath(std::string(TARVEX_SOURCE_DIR "/tests/data/corpus/gen/") + name);
}

class FilterTest : public testing::Test {
 protected:
  void TearDown() override {
    m_graph.reset();
    EXPECT_TRUE(ModuleBecomesIdle()) << "something of the module is left";
  }

  TestGraph& Graph() { return *m_graph; }
  IBaseFilter* Splitter() { return m_graph->Splitter(); }
  template <class I>
  ComPtr<I> Ask() {
    return QueryFor<I>(Splitter());
  }

  /// Opens these bytes through a source that the test can disturb.
  ComPtr<CSourceFilter> OpenMovie(const MovieShape& shape) {
    ComPtr<CSourceFilter> source = CSourceFilter::FromBytes(MakeMovie(shape));
    EXPECT_EQ(Graph().Open(source.Get()), S_OK);
    return source;
  }

  std::optional<TestGraph> m_graph{std::in_place};
};

}  // namespace tarvex::test
