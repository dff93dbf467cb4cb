// Who keeps what alive, and that all of it goes.
#include "framework/thread.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

using Lifetime = OpenedTest;
using Unloading = ContractTest;

TEST_F(Lifetime, PinsAndEnumeratorsThatOutliveTheirGraphCanStillBeAsked) {
  const ComPtr<IPin> output = Graph().OutputPins().at(0);
  const ComPtr<IPin> input = Graph().InputPin();
  ComPtr<IEnumPins> list;
  ASSERT_EQ(Graph().Splitter()->EnumPins(list.Put()), S_OK);
  m_source.Reset();
  m_graph.reset();
  EXPECT_FALSE(ModuleIsIdle());
  EXPECT_EQ(DirectionOf(output.Get()), PINDIR_OUTPUT);
  EXPECT_FALSE(IsConnected(output.Get()));
  EXPECT_FALSE(IsConnected(input.Get()));
  list->Reset();
  ComPtr<IPin> pin;
  EXPECT_EQ(list->Next(1, pin.Put(), nullptr), S_OK);
}

// The filter may be gone by then, too: nothing of it may be touched.
TEST_F(Lifetime, APinOfAClosedSourceAnswersThatItBelongsNowhere) {
  const ComPtr<IPin> pin = Graph().OutputPins().at(0);
  const CMediaType type = TypeOf(pin.Get());
  ASSERT_EQ(Graph().CloseSource(), S_OK);
  m_source.Reset();
  m_graph.reset();
  const auto sink = SinkFilter::Create(SinkKind::kCounting);
  EXPECT_EQ(pin->Connect(sink->Pin(), nullptr), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(pin->ReceiveConnection(sink->Pin(), &type), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(pin->Disconnect(), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(pin->QueryAccept(&type), S_FALSE);
  ComPtr<IEnumMediaTypes> types;
  EXPECT_EQ(pin->EnumMediaTypes(types.Put()), VFW_E_NOT_CONNECTED);
  PIN_INFO info{};
  EXPECT_EQ(pin->QueryPinInfo(&info), VFW_E_NOT_IN_GRAPH);
  EXPECT_EQ(info.pFilter, nullptr);
  EXPECT_EQ(DirectionOf(pin.Get()), PINDIR_OUTPUT);
  EXPECT_FALSE(IsConnected(pin.Get()));
  EXPECT_FALSE(IsConnected(sink->Pin()));

  const ComPtr<IMediaSeeking> seeking = pin.Query<IMediaSeeking>();
  LONGLONG time = 5;
  double rate = 1;
  const GUID frames = TIME_FORMAT_FRAME;
  const DWORD absolute = AM_SEEKING_AbsolutePositioning;
  EXPECT_EQ(seeking->SetPositions(&time, absolute, &time, absolute), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetPositions(&time, &time), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetDuration(&time), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetStopPosition(&time), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetAvailable(&time, &time), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->ConvertTimeFormat(&time, &frames, 1, nullptr), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->SetRate(2), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetRate(&rate), VFW_E_NOT_CONNECTED);
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
}

TEST_F(Lifetime, AGraphThatIsDroppedWhileRunningLeavesNothing) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kSlow), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ASSERT_TRUE(Graph().Sink(0).WaitForSample(kPatience));
}

TEST_F(Lifetime, APinMayLeaveItsFilterWhileOthersUseIt) {
  for (int round = 0; round < 20; ++round) {
    OpenMovie({.frames = 1});
    Thread user;
    ASSERT_EQ(user.Start([pin = Output(0)] {
      for (int i = 0; i < 50; ++i) {
        PIN_INFO info{};
        pin->QueryPinInfo(&info);
        const auto held = ComPtr<IBaseFilter>::Attach(info.pFilter);
        pin->Disconnect();
        const ComPtr<IPin> more(pin.Get());
      }
    }),
              S_OK);
    EXPECT_EQ(Graph().CloseSource(), S_OK);
    m_source.Reset();
    m_graph.reset();
    user.Join();
  }
}

TEST_F(Lifetime, AFilterKnowsItsGraphUntilItIsRemoved) {
  const ComPtr<IBaseFilter> filter(Graph().Splitter());
  FILTER_INFO info{};
  ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
  EXPECT_TRUE(IsSameObject(ComPtr<IFilterGraph>::Attach(info.pGraph).Get(), Graph().Graph()));
  EXPECT_EQ(WideString(info.achName), OLESTR("Splitter"));
  m_source.Reset();
  m_graph.reset();
  ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
  EXPECT_EQ(info.pGraph, nullptr);
}

TEST_F(Unloading, AfterPlayingTheModuleCanBeUnloaded) {
  EXPECT_TRUE(ModuleIsIdle());
  EXPECT_TRUE(LoadUseAndUnload([](ComPtr<IBaseFilter> splitter) {
    TestGraph graph(std::move(splitter));
    const auto source = SourceFilter::FromBytes(MakeMovie({}));
    ASSERT_EQ(graph.Open(source.Get()), S_OK);
    ASSERT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
    ASSERT_TRUE(SUCCEEDED(graph.Run()));
    ASSERT_TRUE(graph.WaitForEnd());
  }));
}

}  // namespace
}  // namespace tarvex::test
