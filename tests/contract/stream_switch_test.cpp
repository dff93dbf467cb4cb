// What the splitter asks its graph for: when a stream is switched, also where the new one finds no renderer. In a graph
// of ours, which says so. Natively only.
#include <algorithm>

#include "tests/contract/contract_fixture.h"
#include "tests/support/linux/filter_graph.h"

namespace tarvex::test {
namespace {

class RenderingGraph : public FilterGraph {
 public:
  HRESULT STDMETHODCALLTYPE Render(IPin* pin) override {
    if (refusals-- > 0) return VFW_E_CANNOT_RENDER;
    const auto sink = SinkFilter::Create(SinkKind::kCounting);
    ++filters;
    const HRESULT result = AddFilter(sink.Get(), OLESTR("Sink"));
    return FAILED(result) ? result : ConnectDirect(pin, sink->Pin(), nullptr);
  }
  HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter* filter) override {
    const ComPtr<IBaseFilter> with = std::move(goesWithTheNext);
    if (with) RemoveFilter(with.Get());
    --filters;
    return FilterGraph::RemoveFilter(filter);
  }
  HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG /*milliseconds*/, LONG* /*code*/) override {
    ++completionWaits;
    return S_OK;
  }

  int refusals = 0;
  int filters = 0;  ///< rendered less those removed
  int completionWaits = 0;
  ComPtr<IBaseFilter> goesWithTheNext;
};

class InItsGraph : public GraphTest {
 protected:
  void SetUp() override {
    const auto rendering = MakeCom<RenderingGraph>();
    m_rendering = rendering.Get();
    m_graph.emplace(CreateSplitter(), ComPtr<IGraphBuilder>(m_rendering));
  }
  HRESULT Enable(LONG index) { return Ask<IAMStreamSelect>()->Enable(index, AMSTREAMSELECTENABLE_ENABLE); }
  bool IsEnabled(LONG index) {
    DWORD flags = 0;
    Ask<IAMStreamSelect>()->Info(index, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr);
    return flags == AMSTREAMSELECTINFO_ENABLED;
  }
  bool AllAreConnected() {
    return std::ranges::all_of(Graph().OutputPins(), [](const auto& pin) { return IsConnected(pin.Get()); });
  }

  RenderingGraph* m_rendering = nullptr;  // m_graph's
};

TEST_F(InItsGraph, ARefusedSwitchIsTakenBackAndOnlyARunningGraphIsWaitedFor) {
  constexpr LONG kEnglish = 5;
  constexpr LONG kFrench = 6;
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  m_rendering->refusals = 1;
  EXPECT_EQ(Enable(kEnglish), S_OK);
  EXPECT_TRUE(IsEnabled(kFrench) && AllAreConnected());

  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  m_rendering->goesWithTheNext = ComPtr<IBaseFilter>(&Graph().Sink(0));
  EXPECT_EQ(Enable(kEnglish), S_OK);
  EXPECT_TRUE(IsEnabled(kEnglish) && AllAreConnected()) << "one filter may show pictures and subtitles";
  EXPECT_EQ(m_rendering->completionWaits, 0);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_EQ(Enable(kFrench), S_OK);
  EXPECT_EQ(m_rendering->completionWaits, 1);
  EXPECT_EQ(m_rendering->filters, 0) << "a renderer takes the place of the one before it";
  EXPECT_FALSE(IsConnected(Graph().Sink(2).Pin()));

  ASSERT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(m_rendering->Disconnect(Output(0).Get()), S_OK);
  EXPECT_EQ(Enable(kEnglish), S_OK);
  EXPECT_FALSE(IsConnected(Output(0).Get())) << "what the player left out is not rendered for it";
  Splitter()->JoinFilterGraph(nullptr, nullptr);
  EXPECT_EQ(Enable(kFrench), VFW_E_NOT_IN_GRAPH);
  EXPECT_TRUE(IsEnabled(kEnglish));
}

}  // namespace
}  // namespace tarvex::test
