// Who keeps what alive, and that all of it goes.
#include "framework/text_conversion.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

using Lifetime = OpenedTest;

TEST_F(Lifetime, WhatOutlivesItsGraphOrItsFilterCanStillBeAsked) {
  ComPtr<IBaseFilter> filter(Splitter());
  const ComPtr<IPin> pin = Output(0);
  const ComPtr<IMediaSeeking> seeking = pin.Query<IMediaSeeking>();
  FILTER_INFO info{};
  ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
  EXPECT_TRUE(IsSameObject(ComPtr<IFilterGraph>::Attach(info.pGraph).Get(), Graph().Graph()));
  EXPECT_EQ(WideString(info.achName), OLESTR("Splitter"));
  Drop();
  EXPECT_FALSE(ModuleIsIdle());
  ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
  EXPECT_EQ(info.pGraph, nullptr);
  EXPECT_EQ(AllPins(filter.Get()).size(), 1U);

  filter.Reset();
  const auto sink = SinkFilter::Create(SinkKind::kCounting);
  EXPECT_EQ(pin->Connect(sink->Pin(), nullptr), VFW_E_NOT_CONNECTED);
  ComPtr<IEnumMediaTypes> types;
  EXPECT_EQ(pin->EnumMediaTypes(types.Put()), VFW_E_NOT_CONNECTED);
  PIN_INFO belongs{};
  EXPECT_EQ(pin->QueryPinInfo(&belongs), VFW_E_NOT_IN_GRAPH);
  EXPECT_EQ(belongs.pFilter, nullptr);
  LONGLONG time = 5;
  EXPECT_EQ(seeking->SetPositions(&time, AM_SEEKING_AbsolutePositioning, nullptr, 0), VFW_E_NOT_CONNECTED);
}

// And before, started again while the filters around it go on.
TEST_F(Lifetime, AGraphThatIsDroppedWhileRunningLeavesNothing) {
  for (const SinkKind kind : {SinkKind::kCounting, SinkKind::kSlow, SinkKind::kHolding, SinkKind::kBlocking}) {
    SCOPED_TRACE(NameOf(kind));
    OpenMovie({.frames = 3000, .frameSize = 10000});
    ASSERT_EQ(Graph().ConnectSinks(kind), S_OK);
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ASSERT_TRUE(EverySinkHasASample());
    SleepMilliseconds(50);  // until the ring of a sink that takes no more is full
    EXPECT_TRUE(SUCCEEDED(Splitter()->Stop()));
    for (const auto& sink : Graph().Sinks()) {
      sink->LetGo();
      sink->Clear();
    }
    EXPECT_TRUE(SUCCEEDED(Splitter()->Run(0)));
    EXPECT_TRUE(EverySinkHasASample()) << "stopped alone, it does not start again";
    Graph().Abandon();
    EXPECT_TRUE(ModuleBecomesIdle());
  }
}

}  // namespace
}  // namespace tarvex::test
