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

class RefusedSwitch : public ContractTest {
 protected:
  static constexpr LONG kEnglishSubtitles = 5;
  static constexpr LONG kFrenchSubtitles = 6;

  void SetUp() override {
    ASSERT_EQ(m_graph->Open(CorpusFile("multi.mkv")), S_OK);
    for (const ComPtr<IPin>& pin : m_graph->OutputPins()) ASSERT_EQ(m_rendering->Render(pin.Get()), S_OK);
    ASSERT_TRUE(IsEnabled(kFrenchSubtitles));
  }
  void TearDown() override {
    m_graph.reset();
    m_rendering.Reset();
    ContractTest::TearDown();
  }

  HRESULT Enable(LONG index) {
    return QueryFor<IAMStreamSelect>(m_graph->Splitter())->Enable(index, AMSTREAMSELECTENABLE_ENABLE);
  }
  bool IsEnabled(LONG index) {
    DWORD flags = 0;
    QueryFor<IAMStreamSelect>(m_graph->Splitter())
        ->Info(index, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr);
    return flags == AMSTREAMSELECTINFO_ENABLED;
  }

  ComPtr<RenderingGraph> m_rendering = MakeCom<RenderingGraph>();
  std::optional<TestGraph> m_graph{std::in_place, CreateSplitter(), ComPtr<IGraphBuilder>(m_rendering.Get())};
};

TEST_F(RefusedSwitch, PutsTheOldStreamBackWhenTheNewOneCannotBeRendered) {
  m_rendering->refusals = 1;
  EXPECT_EQ(Enable(kEnglishSubtitles), S_OK);
  EXPECT_TRUE(IsEnabled(kFrenchSubtitles));
  for (const ComPtr<IPin>& pin : m_graph->OutputPins()) EXPECT_TRUE(IsConnected(pin.Get()));
}

TEST_F(RefusedSwitch, OnlyARunningGraphIsWaitedFor) {
  ASSERT_TRUE(SUCCEEDED(m_graph->Pause()));
  EXPECT_EQ(Enable(kEnglishSubtitles), S_OK);
  EXPECT_EQ(m_rendering->completionWaits, 0);
  ASSERT_TRUE(SUCCEEDED(m_graph->Run()));
  EXPECT_EQ(Enable(kFrenchSubtitles), S_OK);
  EXPECT_EQ(m_rendering->completionWaits, 1);
}

TEST_F(RefusedSwitch, OutsideAGraphAConnectedPinStaysAsItIs) {
  m_graph->Splitter()->JoinFilterGraph(nullptr, nullptr);
  EXPECT_EQ(Enable(kEnglishSubtitles), VFW_E_NOT_IN_GRAPH);
  EXPECT_TRUE(IsEnabled(kFrenchSubtitles));
}

}  // namespace
}  // namespace tarvex::test
