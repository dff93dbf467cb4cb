// How long pins and filters live while others hold them.
#include <gtest/gtest.h>

#include "framework/thread.h"
#include "tests/framework/fakes.h"

namespace tarvex::test {
namespace {

TEST(PinLifetime, HeldPinKeepsItsFilter) {
  auto filter = MakeCom<TestFilter>();
  const LONG before = ModuleObjectCount();
  ComPtr<IPin> pin(filter->Add(new TestOutputPin(*filter)));
  filter.Reset();
  PIN_INFO info{};
  ASSERT_EQ(pin->QueryPinInfo(&info), S_OK);
  auto again = ComPtr<IBaseFilter>::Attach(info.pFilter);
  EXPECT_EQ(ModuleObjectCount(), before + 1);
  again.Reset();
  pin.Reset();
  EXPECT_EQ(ModuleObjectCount(), before - 1);
}

TEST(PinLifetime, PinReferencesCountOnTheFilter) {
  const auto filter = MakeCom<TestFilter>();
  auto* pin = filter->Add(new TestOutputPin(*filter));
  const ULONG before = filter->AddRef();
  pin->AddRef();
  EXPECT_EQ(filter->AddRef(), before + 2);
  filter->Release();
  pin->Release();
  EXPECT_EQ(filter->Release(), before - 1);
}

TEST(PinLifetime, PinThatLeftAnswersWithoutItsFilter) {
  auto filter = MakeCom<TestFilter>();
  const LONG before = ModuleObjectCount();
  ComPtr<TestOutputPin> pin(filter->Add(new TestOutputPin(*filter)));
  const auto peerFilter = MakeCom<TestFilter>();
  auto* peer = peerFilter->Add(new TestInputPin(*peerFilter));
  filter->RemoveAll();
  filter.Reset();  // gone: the pin does not hold it any more

  const CMediaType type = TypeOf(MEDIATYPE_Video);
  EXPECT_EQ(pin->Connect(peer, nullptr), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(pin->ReceiveConnection(peer, &type), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(pin->Disconnect(), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(pin->QueryAccept(&type), S_FALSE);
  ComPtr<IEnumMediaTypes> types;
  EXPECT_EQ(pin->EnumMediaTypes(types.Put()), VFW_E_NOT_CONNECTED);
  PIN_INFO info{};
  EXPECT_EQ(pin->QueryPinInfo(&info), VFW_E_NOT_IN_GRAPH);
  EXPECT_EQ(info.pFilter, nullptr);
  PIN_DIRECTION direction = PINDIR_INPUT;
  EXPECT_EQ(pin->QueryDirection(&direction), S_OK);
  EXPECT_EQ(direction, PINDIR_OUTPUT);
  pin.Reset();
  EXPECT_EQ(ModuleObjectCount(), before + 1);  // the filter less, its peer and the peer's pin more
}

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

TEST(PinLifetime, ConnectedFiltersGoWhenTheyAreDisconnectedAndReleased) {
  { const Downstream down; }
  EXPECT_TRUE(ModuleCanUnload());
}

}  // namespace
}  // namespace tarvex::test
