// Identity, aggregation and the module's count.
#include "framework/unknown.h"

#include <gtest/gtest.h>

#include "tests/framework/fakes.h"

namespace tarvex::test {
namespace {

/// Holds an aggregated filter and answers for it.
class Outer : public CUnknown {
 public:
  Outer() : CUnknown("Outer", nullptr) {
    auto* filter = new TestFilter(Inner());
    m_inner = ComPtr<IUnknown>(filter->Inner());
  }
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override {
    return iid == IID_IUnknown ? CUnknown::NonDelegatingQueryInterface(iid, out) : m_inner->QueryInterface(iid, out);
  }

 private:
  ComPtr<IUnknown> m_inner;
};

TEST(Unknown, AggregatedObjectSharesTheOuterIdentityAndLife) {
  const LONG before = ModuleObjectCount();
  {
    const ComPtr<IUnknown> outer((new Outer)->Inner());
    const auto filter = outer.Query<IBaseFilter>();
    ASSERT_TRUE(filter);
    EXPECT_EQ(filter.Query<IUnknown>(), outer);
    EXPECT_EQ(filter.Query<IAMovieSetup>().Query<IUnknown>(), outer);
    EXPECT_EQ(outer->AddRef(), 3u);
    EXPECT_EQ(filter->Release(), 2u);
  }
  EXPECT_EQ(ModuleObjectCount(), before);
}

TEST(Unknown, EveryInterfaceAnswersWithTheSameIdentity) {
  const auto filter = MakeCom<TestFilter>();
  const auto identity = QueryFor<IUnknown>(static_cast<IBaseFilter*>(filter.Get()));
  EXPECT_TRUE(IsSameObject(filter.Get()->Owner(), identity.Get()));
  EXPECT_TRUE(IsSameObject(identity.Query<IPersist>().Get(), identity.Query<IAMovieSetup>().Get()));
  void* out = &out;
  EXPECT_EQ(identity->QueryInterface(IID_IPin, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
}

TEST(Unknown, ModuleStaysWhileAnObjectOrALockIsAlive) {
  ASSERT_TRUE(ModuleCanUnload());
  auto filter = MakeCom<TestFilter>();
  EXPECT_FALSE(ModuleCanUnload());
  filter.Reset();
  LockModule(true);
  EXPECT_FALSE(ModuleCanUnload());
  LockModule(false);
  EXPECT_TRUE(ModuleCanUnload());
}

}  // namespace
}  // namespace tarvex::test
