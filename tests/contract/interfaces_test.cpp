// COM's rules of identity, and aggregation, on the filter and its pins.
#include <atomic>
#include <span>

#include "framework/unknown.h"
#include "include/tarvex/class_ids.h"
#include "include/tarvex/module_config.h"
#include "include/tarvex/module_log.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

// {8E2B2B5C-6B6C-4C0F-9E0E-5D7E1B1F6A10}: nobody's.
constexpr GUID kUnheardOf = {0x8E2B2B5C, 0x6B6C, 0x4C0F, {0x9E, 0x0E, 0x5D, 0x7E, 0x1B, 0x1F, 0x6A, 0x10}};

ComPtr<IUnknown> AskFor(IUnknown* object, const GUID& iid) {
  ComPtr<IUnknown> answer;
  object->QueryInterface(iid, answer.PutVoid());
  return answer;
}

constexpr const GUID* kFilterInterfaces[] = {
    &IID_IUnknown,        &IID_IPersist,      &IID_IMediaFilter,       &IID_IBaseFilter, &IID_IAMovieSetup,
    &IID_IAMStreamSelect, &IID_IModuleConfig, &IID_IAMExtendedSeeking, &IID_IModuleLog,  &IID_IPersistStream};
constexpr const GUID* kPinInterfaces[] = {&IID_IUnknown, &IID_IPin, &IID_IQualityControl};

// From every interface every other is reached, and all have one IUnknown; what is none is refused.
void ExpectOneObject(IUnknown* object, std::span<const GUID* const> interfaces) {
  const ComPtr<IUnknown> identity = AskFor(object, IID_IUnknown);
  for (const GUID* from : interfaces) {
    const ComPtr<IUnknown> start = AskFor(object, *from);
    ASSERT_TRUE(start) << "interface " << std::hex << from->Data1;
    EXPECT_EQ(AskFor(start.Get(), IID_IUnknown), identity);
    for (const GUID* to : interfaces) EXPECT_TRUE(AskFor(start.Get(), *to)) << std::hex << from->Data1 << to->Data1;
  }
  void* answer = object;
  EXPECT_EQ(object->QueryInterface(kUnheardOf, &answer), E_NOINTERFACE);
  EXPECT_EQ(answer, nullptr);
}

using Interfaces = OpenedTest;

TEST_F(Interfaces, FilterAndPinsAreOneObjectEach) {
  CLSID clsid{};
  EXPECT_EQ(Splitter()->GetClassID(&clsid), S_OK);
  EXPECT_EQ(clsid, CLSID_MatroskaSplitter);
  ExpectOneObject(Splitter(), kFilterInterfaces);
  for (const ComPtr<IPin>& pin : AllPins(Splitter())) {
    ExpectOneObject(pin.Get(), kPinInterfaces);
    EXPECT_FALSE(AskFor(pin.Get(), IID_IBaseFilter));
    EXPECT_EQ(DirectionOf(pin.Get()) == PINDIR_OUTPUT, bool{AskFor(pin.Get(), IID_IMediaSeeking)});
  }
}

// The outer object of an aggregation: shares its identity with the splitter inside. Lives on a test's
// stack, so its count only tells whether all references came back.
class Outer : public IUnknown {  // NOLINT(cppcoreguidelines-virtual-class-destructor)
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (iid != IID_IUnknown) return inner->QueryInterface(iid, out);
    return GiveInterface(this, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }

  ComPtr<IUnknown> inner;
  std::atomic<ULONG> references{0};
};

TEST_F(Interfaces, AnAggregatedFilterTakesTheIdentityOfItsOuterObjectAndALockKeepsTheModule) {
  Drop();
  Outer outer;
  void* filter = &outer;
  EXPECT_EQ(CreateSplitter(&outer, IID_IBaseFilter, &filter), E_NOINTERFACE) << "IUnknown must be the first";
  EXPECT_EQ(filter, nullptr);
  ASSERT_EQ(CreateSplitter(&outer, IID_IUnknown, outer.inner.PutVoid()), S_OK);
  ExpectOneObject(&outer, kFilterInterfaces);
  {
    const ComPtr<IBaseFilter> inner = QueryFor<IBaseFilter>(static_cast<IUnknown*>(&outer));
    ASSERT_EQ(outer.references, 1U);
    PIN_INFO info{};
    ASSERT_EQ(AllPins(inner.Get()).at(0)->QueryPinInfo(&info), S_OK);
    EXPECT_TRUE(IsSameObject(ComPtr<IBaseFilter>::Attach(info.pFilter).Get(), &outer));
  }
  EXPECT_EQ(outer.references, 0U);
  EXPECT_FALSE(ModuleIsIdle());
  outer.inner.Reset();
  EXPECT_TRUE(ModuleBecomesIdle());

  ComPtr<IClassFactory> factory;
  EXPECT_EQ(GetClassObject(kUnheardOf, IID_IClassFactory, factory.PutVoid()), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_FALSE(factory);
  for (const BOOL isLocked : {TRUE, FALSE}) {
    ASSERT_EQ(GetClassObject(CLSID_MatroskaSplitter, IID_IClassFactory, factory.PutVoid()), S_OK);
    EXPECT_EQ(factory->LockServer(isLocked), S_OK);
    factory.Reset();
    EXPECT_EQ(ModuleIsIdle(), isLocked == FALSE);
  }
}

}  // namespace
}  // namespace tarvex::test
