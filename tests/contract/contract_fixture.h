// What the contract tests share: graphs over a small file made in memory, and questions to pins.
#pragma once

#include <string>
#include <vector>

#include "filter/interface_ids.h"
#include "tests/support/graph_test.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::test {

/// With a graph in which the movie is open.
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

inline FILTER_STATE StateOf(IBaseFilter* filter) {
  FILTER_STATE state = State_Stopped;
  EXPECT_EQ(filter->GetState(0, &state), S_OK);
  return state;
}

}  // namespace tarvex::test
