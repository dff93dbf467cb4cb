// State changes of a filter and its place in a graph.
#include <gtest/gtest.h>

#include "tests/framework/fakes.h"

namespace tarvex::test {
namespace {

/// Two output pins connected to two input pins, and one left unconnected.
class FilterState : public ::testing::Test {
 protected:
  FilterState() {
    for (const OLECHAR* name : {OLESTR("1"), OLESTR("2")}) {
      outputs.push_back(filter->Add(new TestOutputPin(*filter, name)));
      inputs.push_back(sink->Add(new TestInputPin(*sink, name)));
      EXPECT_EQ(outputs.back()->Connect(inputs.back(), nullptr), S_OK);
    }
    outputs.push_back(filter->Add(new TestOutputPin(*filter, OLESTR("3"))));
  }
  ~FilterState() override {
    filter->Stop();
    for (auto* pin : outputs) pin->Disconnect();
    for (auto* pin : inputs) pin->Disconnect();
  }
  std::vector<int> Activations() const {
    std::vector<int> result;
    for (const auto* pin : outputs) result.push_back(pin->activations);
    return result;
  }
  FILTER_STATE State() {
    FILTER_STATE state = State_Stopped;
    EXPECT_EQ(filter->GetState(0, &state), S_OK);
    return state;
  }

  ComPtr<TestFilter> filter = MakeCom<TestFilter>();
  ComPtr<TestFilter> sink = MakeCom<TestFilter>();
  std::vector<TestOutputPin*> outputs;
  std::vector<TestInputPin*> inputs;
};

TEST_F(FilterState, PauseActivatesConnectedPinsOnce) {
  EXPECT_EQ(filter->Pause(), S_OK);
  EXPECT_EQ(filter->Pause(), S_OK);
  EXPECT_EQ(Activations(), (std::vector<int>{1, 1, 0}));
  EXPECT_EQ(State(), State_Paused);
  EXPECT_EQ(filter->Stop(), S_OK);
  EXPECT_EQ(filter->Stop(), S_OK);
  EXPECT_EQ(Activations(), (std::vector<int>{0, 0, 0}));
}

TEST_F(FilterState, RunFromStoppedGoesThroughPause) {
  EXPECT_EQ(filter->Run(0), S_OK);
  EXPECT_EQ(State(), State_Running);
  EXPECT_EQ(Activations(), (std::vector<int>{1, 1, 0}));
}

TEST_F(FilterState, FailedActivationIsRolledBack) {
  outputs[1]->activeResult = E_OUTOFMEMORY;
  EXPECT_EQ(filter->Pause(), E_OUTOFMEMORY);
  EXPECT_EQ(State(), State_Stopped);
  EXPECT_EQ(Activations(), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(filter->Run(0), E_OUTOFMEMORY);
  EXPECT_EQ(State(), State_Stopped);
}

/// As much of a graph as a filter sees.
class FakeGraph : public CUnknownImpl<IFilterGraph, IMediaEventSink> {
 public:
  FakeGraph() : CUnknownImpl("FakeGraph", nullptr) {}
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override {
    if (iid == IID_IMediaEventSink) return GiveInterface(static_cast<IMediaEventSink*>(this), out);
    return CUnknown::NonDelegatingQueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ConnectDirect(IPin*, IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reconnect(IPin*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Disconnect(IPin*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetDefaultSyncSource() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Notify(LONG code, LONG_PTR parameter1, LONG_PTR) override {
    lastCode = code;
    lastParameter = parameter1;
    return S_OK;
  }

  LONG lastCode = 0;
  LONG_PTR lastParameter = 0;
};

TEST(FilterInGraph, IsNotKeptByItAndKeepsItNot) {
  auto graph = MakeCom<FakeGraph>();
  const auto filter = MakeCom<TestFilter>();
  EXPECT_EQ(filter->NotifyEvent(EC_ERRORABORT, E_FAIL, 0), E_NOTIMPL);
  ASSERT_EQ(filter->JoinFilterGraph(graph.Get(), OLESTR("name")), S_OK);
  EXPECT_EQ(graph->AddRef(), 2u);
  graph->Release();
  FILTER_INFO info{};
  ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
  EXPECT_EQ(ComPtr<IFilterGraph>::Attach(info.pGraph).Get(), graph.Get());
  EXPECT_EQ(WideString(info.achName), OLESTR("name"));
  EXPECT_EQ(filter->NotifyEvent(EC_ERRORABORT, E_FAIL, 0), S_OK);
  EXPECT_EQ(graph->lastCode, LONG{EC_ERRORABORT});
  EXPECT_EQ(graph->lastParameter, E_FAIL);
  ASSERT_EQ(filter->JoinFilterGraph(nullptr, nullptr), S_OK);
  graph.Reset();
  EXPECT_EQ(filter->NotifyEvent(EC_ERRORABORT, E_FAIL, 0), E_NOTIMPL);
}

}  // namespace
}  // namespace tarvex::test
