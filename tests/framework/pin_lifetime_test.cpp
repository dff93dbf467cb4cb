// A pin that leaves its filter while others use it, and a filter that cannot start.
#include <gtest/gtest.h>

#include "framework/thread.h"
#include "tests/framework/fakes.h"

namespace tarvex::test {
namespace {

TEST(PinLifetime, LeavingWhileOthersUseThePin) {
  for (int round = 0; round < 50; ++round) {
    auto filter = MakeCom<TestFilter>();
    ComPtr<TestOutputPin> pin(filter->Add(new TestOutputPin(*filter)));
    CThread user;
    ASSERT_EQ(user.Start([pin] {
      for (int i = 0; i < 50; ++i) {
        PIN_INFO info{};
        pin->QueryPinInfo(&info);
        const auto held = ComPtr<IBaseFilter>::Attach(info.pFilter);
        pin->Disconnect();
        const ComPtr<IPin> more(pin.Get());
      }
    }),
              S_OK);
    filter->RemoveAll();
    filter.Reset();
    pin.Reset();
    user.Join();
  }
  EXPECT_TRUE(ModuleCanUnload());
}

TEST(FilterState, FailedActivationIsRolledBack) {
  Downstream down;
  auto* other = down.upstreamFilter->Add(new TestOutputPin(*down.upstreamFilter));
  auto* peer = down.filter->Add(new TestInputPin(*down.filter));
  ASSERT_EQ(down.filter->Stop(), S_OK);
  ASSERT_EQ(other->Connect(peer, nullptr), S_OK);
  other->activeResult = E_OUTOFMEMORY;
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_EQ(attempt == 0 ? down.upstreamFilter->Pause() : down.upstreamFilter->Run(0), E_OUTOFMEMORY);
    FILTER_STATE state = State_Running;
    EXPECT_EQ(down.upstreamFilter->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Stopped);
    EXPECT_EQ(down.output->activations, 0) << "the pin that could be activated still is";
  }
  other->Disconnect();
  peer->Disconnect();
}

}  // namespace
}  // namespace tarvex::test
