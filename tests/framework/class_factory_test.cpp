// The class factory's rules.
#include "framework/class_factory.h"

#include <gtest/gtest.h>

#include <new>

#include "tests/framework/fakes.h"

namespace tarvex::test {
namespace {

constexpr GUID kBroken = {1, 0, 0, {0}};
constexpr GUID kFailing = {2, 0, 0, {0}};
constexpr GUID kUnknownClass = {3, 0, 0, {0}};

const FactoryTemplate kTable[] = {
    {OLESTR("filter"), &kTestFilterId, [](IUnknown* outer, HRESULT*) -> CUnknown* { return new TestFilter(outer); },
     nullptr},
    {OLESTR("broken"), &kBroken, [](IUnknown*, HRESULT*) -> CUnknown* { throw std::bad_alloc(); }, nullptr},
    {OLESTR("failing"), &kFailing,
     [](IUnknown* outer, HRESULT* result) -> CUnknown* {
       *result = E_ACCESSDENIED;
       return new TestFilter(outer);
     },
     nullptr}};

class Factory : public ::testing::Test {
 protected:
  static HRESULT Create(const CLSID& clsid, IUnknown* outer, REFIID iid, void** out) {
    ComPtr<IClassFactory> factory;
    const HRESULT hr = GetClassObjectFrom(kTable, clsid, IID_IClassFactory, factory.PutVoid());
    return FAILED(hr) ? hr : factory->CreateInstance(outer, iid, out);
  }
  void TearDown() override { EXPECT_TRUE(ModuleCanUnload()); }
};

TEST_F(Factory, MakesTheListedClass) {
  ComPtr<IBaseFilter> filter;
  EXPECT_EQ(Create(kTestFilterId, nullptr, IID_IBaseFilter, filter.PutVoid()), S_OK);
  EXPECT_TRUE(filter);
}

TEST_F(Factory, RefusesWhatIsNotListed) {
  ComPtr<IUnknown> object;
  EXPECT_EQ(Create(kUnknownClass, nullptr, IID_IUnknown, object.PutVoid()), CLASS_E_CLASSNOTAVAILABLE);
}

TEST_F(Factory, AggregationNeedsIUnknown) {
  const auto outer = MakeCom<TestFilter>();
  ComPtr<IBaseFilter> filter;
  EXPECT_EQ(Create(kTestFilterId, outer->Owner(), IID_IBaseFilter, filter.PutVoid()), E_NOINTERFACE);
}

TEST_F(Factory, FailuresOfTheConstructorBecomeCodesAndLeaveNothing) {
  ComPtr<IUnknown> object;
  EXPECT_EQ(Create(kBroken, nullptr, IID_IUnknown, object.PutVoid()), E_OUTOFMEMORY);
  EXPECT_EQ(Create(kFailing, nullptr, IID_IUnknown, object.PutVoid()), E_ACCESSDENIED);
  EXPECT_EQ(Create(kTestFilterId, nullptr, IID_IPin, object.PutVoid()), E_NOINTERFACE);
  EXPECT_FALSE(object);
}

TEST_F(Factory, ServerLockKeepsTheModule) {
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(GetClassObjectFrom(kTable, kTestFilterId, IID_IClassFactory, factory.PutVoid()), S_OK);
  factory->LockServer(TRUE);
  const ComPtr<IClassFactory> keep = std::move(factory);
  keep->LockServer(FALSE);
}

}  // namespace
}  // namespace tarvex::test
