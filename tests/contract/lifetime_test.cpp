// Who keeps what alive, and that all of it goes.
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

class Lifetime : public OpenedTest {};
class Unloading : public ContractTest {};

TEST_F(Lifetime, APinKeepsItsFilterWorking) {
  const ComPtr<IPin> pin = Graph().OutputPins().at(0);
  ComPtr<IBaseFilter> filter(Graph().Splitter());
  filter.Reset();
  PIN_INFO info{};
  ASSERT_EQ(pin->QueryPinInfo(&info), S_OK);
  EXPECT_TRUE(IsSameObject(ComPtr<IBaseFilter>::Attach(info.pFilter).Get(), Graph().Splitter()));
}

TEST_F(Lifetime, APinThatOutlivesItsGraphCanStillBeAsked) {
  ComPtr<IPin> output = Graph().OutputPins().at(0);
  ComPtr<IPin> input = Graph().InputPin();
  m_source.Reset();
  m_graph.reset();
  EXPECT_FALSE(ModuleIsIdle());
  PIN_DIRECTION direction = PINDIR_INPUT;
  EXPECT_EQ(output->QueryDirection(&direction), S_OK);
  EXPECT_EQ(direction, PINDIR_OUTPUT);
  EXPECT_FALSE(IsConnected(output.Get()));
  EXPECT_FALSE(IsConnected(input.Get()));
}

TEST_F(Lifetime, APinOfAClosedSourceAnswersThatItBelongsNowhere) {
  const ComPtr<IPin> pin = Graph().OutputPins().at(0);
  ASSERT_EQ(Graph().CloseSource(), S_OK);
  const auto sink = CSinkFilter::Create(SinkKind::kCounting);
  EXPECT_TRUE(FAILED(pin->Connect(sink->Pin(), nullptr)));
  EXPECT_FALSE(IsConnected(pin.Get()));
  EXPECT_FALSE(IsConnected(sink->Pin()));
}

TEST_F(Lifetime, ASampleStaysReadableAfterItsGraphIsGone) {
  ComPtr<IMediaSample> kept;
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  Graph().Sink(1).OnSample([&kept](IMediaSample* sample) {
    if (!kept) kept = ComPtr<IMediaSample>(sample);
  });
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().WaitForEnd());
  m_source.Reset();
  m_graph.reset();
  ASSERT_TRUE(kept);
  BYTE* data = nullptr;
  ASSERT_EQ(kept->GetPointer(&data), S_OK);
  ASSERT_EQ(kept->GetActualDataLength(), 200);
  for (int k = 0; k < 200; ++k) ASSERT_EQ(data[k], 2);
  kept.Reset();
}

TEST_F(Lifetime, AnEnumeratorKeepsItsFilter) {
  ComPtr<IEnumPins> list;
  ASSERT_EQ(Graph().Splitter()->EnumPins(list.Put()), S_OK);
  m_source.Reset();
  m_graph.reset();
  EXPECT_FALSE(ModuleIsIdle());
  list->Reset();
  ComPtr<IPin> pin;
  EXPECT_EQ(list->Next(1, pin.Put(), nullptr), S_OK);
}

TEST_F(Lifetime, AGraphThatIsDroppedWhileRunningLeavesNothing) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kSlow), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().Sink(0).WaitForSample(kPatience));
}

TEST_F(Lifetime, AFilterRemovedFromItsGraphForgetsIt) {
  ComPtr<IBaseFilter> filter(Graph().Splitter());
  m_source.Reset();
  m_graph.reset();
  FILTER_INFO info{};
  ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
  EXPECT_EQ(info.pGraph, nullptr);
}

TEST_F(Unloading, AnUnusedModuleIsIdle) { EXPECT_TRUE(ModuleIsIdle()); }

TEST_F(Unloading, AFilterKeepsTheModule) {
  const ComPtr<IBaseFilter> filter = CreateSplitter();
  EXPECT_FALSE(ModuleIsIdle());
}

TEST_F(Unloading, AfterPlayingTheModuleCanBeUnloaded) {
  EXPECT_TRUE(LoadUseAndUnload([](ComPtr<IBaseFilter> splitter) {
    TestGraph graph(std::move(splitter));
    const auto source = CSourceFilter::FromBytes(MakeMovie({}));
    ASSERT_EQ(graph.Open(source.Get()), S_OK);
    ASSERT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    ASSERT_TRUE(graph.WaitForEnd());
  }));
}

}  // namespace
}  // namespace tarvex::test
