// A stream switched where the new one finds no renderer, and what the graph is asked for on the way. In a graph
// of ours, which says so. Natively only.
#include "tests/contract/contract_fixture.h"
#include "tests/support/linux/filter_graph.h"

namespace tarvex::test {
namespace {

class RenderingGraph : public FilterGraph {
 public:
  HRESULT STDMETHODCALLTYPE Render(IPin* pin) override {
    if (refusals-- > 0) return VFW_E_CANNOT_RENDER;
    const auto sink = SinkFilter::Create(SinkKind::kCounting);
    const HRESULT result = AddFilter(sink.Get(), OLESTR("Sink"));
    return FAILED(result) ? result : ConnectDirect(pin, sink->Pin(), nullptr);
  }
  HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG /*milliseconds*/, LONG* /*code*/) override {
    ++completionWaits;
    return S_OK;
  }

  int refusals = 0;
  int completionWaits = 0;
};

using RefusedSwitch = GraphTest;

TEST_F(RefusedSwitch, PutsTheOldStreamBackAndWaitsForARunningGraphOnly) {
  constexpr LONG kEnglish = 5;
  constexpr LONG kFrench = 6;
  const auto rendering = MakeCom<RenderingGraph>();
  m_graph.emplace(CreateSplitter(), ComPtr<IGraphBuilder>(rendering.Get()));
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  for (const ComPtr<IPin>& pin : Graph().OutputPins()) ASSERT_EQ(rendering->Render(pin.Get()), S_OK);
  const auto select = Ask<IAMStreamSelect>();
  const auto isEnabled = [&](LONG index) {
    DWORD flags = 0;
    select->Info(index, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr);
    return flags == AMSTREAMSELECTINFO_ENABLED;
  };
  rendering->refusals = 1;
  EXPECT_EQ(select->Enable(kEnglish, AMSTREAMSELECTENABLE_ENABLE), S_OK);
  EXPECT_TRUE(isEnabled(kFrench));
  for (const ComPtr<IPin>& pin : Graph().OutputPins()) EXPECT_TRUE(IsConnected(pin.Get()));

  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  EXPECT_EQ(select->Enable(kEnglish, AMSTREAMSELECTENABLE_ENABLE), S_OK);
  EXPECT_TRUE(isEnabled(kEnglish));
  EXPECT_EQ(rendering->completionWaits, 0);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_EQ(select->Enable(kFrench, AMSTREAMSELECTENABLE_ENABLE), S_OK);
  EXPECT_EQ(rendering->completionWaits, 1);

  ASSERT_TRUE(SUCCEEDED(Graph().Stop()));
  Splitter()->JoinFilterGraph(nullptr, nullptr);
  EXPECT_EQ(select->Enable(kEnglish, AMSTREAMSELECTENABLE_ENABLE), VFW_E_NOT_IN_GRAPH);
  EXPECT_TRUE(isEnabled(kFrench));
}

}  // namespace
}  // namespace tarvex::test
