// IAMStreamSelect on connected pins, in a graph of ours that renders a pin into a sink.
#include <vector>

#include "filter/interface_ids.h"
#include "tests/filter/filter_fixture.h"
#include "tests/support/linux/filter_graph.h"

namespace tarvex::test {
namespace {

class RenderingGraph : public CFilterGraph {
 public:
  HRESULT STDMETHODCALLTYPE Render(IPin* pin) override {
    if (refusals-- > 0) return VFW_E_CANNOT_RENDER;
    sinks.push_back(CSinkFilter::Create(SinkKind::kCounting));
    const HRESULT result = AddFilter(sinks.back().Get(), OLESTR("Sink"));
    return FAILED(result) ? result : Connect(pin, sinks.back()->Pin());
  }
  HRESULT STDMETHODCALLTYPE Connect(IPin* out, IPin* in) override { return ConnectDirect(out, in, nullptr); }
  HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG milliseconds, LONG* /*code*/) override {
    ++completionWaits;
    for (const auto& sink : sinks) {
      if (IsConnected(sink->Pin()) && !sink->WaitForEnd(static_cast<DWORD>(milliseconds))) return E_ABORT;
    }
    return S_OK;
  }

  OAFilterState State() {
    OAFilterState state = State_Stopped;
    GetState(0, &state);
    return state;
  }

  std::vector<ComPtr<CSinkFilter>> sinks;
  int refusals = 0;
  int completionWaits = 0;
};

class StreamSwitch : public testing::Test {
 protected:
  static constexpr LONG kEnglishSubtitles = 5;
  static constexpr LONG kFrenchSubtitles = 6;

  void SetUp() override {
    m_graph = MakeCom<RenderingGraph>();
    m_splitter = CreateSplitter();
    m_select = m_splitter.Query<IAMStreamSelect>();
    m_source = CSourceFilter::FromFile(CorpusFile("multi.mkv"));
    m_graph->AddFilter(m_splitter.Get(), OLESTR("Splitter"));
    m_graph->AddFilter(m_source.Get(), OLESTR("Source"));
    ASSERT_EQ(m_graph->Connect(m_source->Pin(), PinsOf(m_splitter.Get()).front().Get()), S_OK);
    for (std::size_t i = 1; i <= 3; ++i) ASSERT_EQ(m_graph->Render(Pin(i).Get()), S_OK);
    ASSERT_TRUE(IsEnabled(kFrenchSubtitles));
  }
  void TearDown() override {
    m_graph->Stop();
    PinsOf(m_splitter.Get()).front()->Disconnect();
    m_source->Pin()->Disconnect();
    m_select.Reset();
    m_source.Reset();
    m_splitter.Reset();
    m_graph.Reset();
    EXPECT_TRUE(ModuleBecomesIdle());
  }

  ComPtr<IPin> Pin(std::size_t index) { return PinsOf(m_splitter.Get()).at(index); }
  bool IsEnabled(LONG index) {
    DWORD flags = 0;
    m_select->Info(index, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr);
    return flags == AMSTREAMSELECTINFO_ENABLED;
  }
  HRESULT Enable(LONG index) { return m_select->Enable(index, AMSTREAMSELECTENABLE_ENABLE); }
  /// The filters that the graph still has, told by what they are connected to.
  std::size_t ConnectedSinks() {
    std::size_t count = 0;
    for (const auto& sink : m_graph->sinks) count += IsConnected(sink->Pin()) ? 1 : 0;
    return count;
  }

  ComPtr<RenderingGraph> m_graph;
  ComPtr<IBaseFilter> m_splitter;
  ComPtr<CSourceFilter> m_source;
  ComPtr<IAMStreamSelect> m_select;
};

TEST_F(StreamSwitch, RendersTheNewStreamInPlaceOfTheOld) {
  EXPECT_EQ(Enable(kEnglishSubtitles), S_OK);
  EXPECT_TRUE(IsEnabled(kEnglishSubtitles));
  EXPECT_FALSE(IsEnabled(kFrenchSubtitles));
  EXPECT_EQ(m_graph->sinks.size(), 4u);
  EXPECT_EQ(ConnectedSinks(), 3u);
  EXPECT_FALSE(IsConnected(m_graph->sinks[2]->Pin())) << "the old stream's renderer is still connected";
  EXPECT_EQ(m_graph->State(), State_Stopped);
}

TEST_F(StreamSwitch, PutsTheOldStreamBackWhenTheNewOneCannotBeRendered) {
  m_graph->refusals = 1;
  EXPECT_EQ(Enable(kEnglishSubtitles), S_OK);
  EXPECT_TRUE(IsEnabled(kFrenchSubtitles));
  EXPECT_EQ(ConnectedSinks(), 3u);
}

TEST_F(StreamSwitch, RunningGraphRunsAgain) {
  ASSERT_TRUE(SUCCEEDED(m_graph->Run()));
  EXPECT_EQ(Enable(kEnglishSubtitles), S_OK);
  EXPECT_EQ(m_graph->State(), State_Running);
  EXPECT_EQ(m_graph->completionWaits, 1);
  EXPECT_TRUE(m_graph->sinks.back()->WaitForEnd(kPatience));
}

TEST_F(StreamSwitch, PausedGraphIsNotWaitedForAndPausesAgain) {
  ASSERT_TRUE(SUCCEEDED(m_graph->Pause()));
  EXPECT_EQ(Enable(kEnglishSubtitles), S_OK);
  EXPECT_EQ(m_graph->State(), State_Paused);
  EXPECT_EQ(m_graph->completionWaits, 0);
  EXPECT_TRUE(m_graph->sinks.back()->WaitForEnd(kPatience));
}

TEST_F(StreamSwitch, OutsideAGraphAConnectedPinStaysAsItIs) {
  m_splitter->JoinFilterGraph(nullptr, nullptr);
  EXPECT_EQ(Enable(kEnglishSubtitles), VFW_E_NOT_IN_GRAPH);
  EXPECT_TRUE(IsEnabled(kFrenchSubtitles));
}

}  // namespace
}  // namespace tarvex::test
