// A pin that leaves its filter while others use it.
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

}  // namespace
}  // namespace tarvex::test
