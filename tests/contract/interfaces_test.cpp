// COM's rules of identity, and aggregation, on the filter and its pins.
#include <atomic>

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

// From every interface every other is reached, all have one IUnknown, and others are refused.
void ExpectOneObject(IUnknown* object, const std::vector<GUID>& interfaces, const std::vector<GUID>& others) {
  const ComPtr<IUnknown> identity = AskFor(object, IID_IUnknown);
  for (const GUID& from : interfaces) {
    const ComPtr<IUnknown> start = AskFor(object, from);
    ASSERT_TRUE(start) << "interface " << std::hex << from.Data1;
    EXPECT_EQ(AskFor(start.Get(), IID_IUnknown).Get(), identity.Get());
    for (const GUID& to : interfaces) EXPECT_TRUE(AskFor(start.Get(), to)) << std::hex << from.Data1 << " " << to.Data1;
  }
  for (const GUID& iid : others) {
    void* answer = object;
    EXPECT_EQ(object->QueryInterface(iid, &answer), E_NOINTERFACE) << std::hex << iid.Data1;
    EXPECT_EQ(answer, nullptr);
  }
}

const std::vector<GUID>& FilterInterfaces() {
  static const std::vector<GUID> all = {
      IID_IUnknown,        IID_IPersist,      IID_IMediaFilter,       IID_IBaseFilter, IID_IAMovieSetup,
      IID_IAMStreamSelect, IID_IModuleConfig, IID_IAMExtendedSeeking, IID_IModuleLog,  IID_IPersistStream};
  return all;
}

using Interfaces = OpenedTest;

TEST_F(Interfaces, FilterAndPinsAreOneObjectEach) {
  CLSID clsid{};
  EXPECT_EQ(Splitter()->GetClassID(&clsid), S_OK);
  EXPECT_EQ(clsid, CLSID_MatroskaSplitter);
  ExpectOneObject(Splitter(), FilterInterfaces(), {kUnheardOf, IID_IPin, IID_IMemInputPin, IID_IAsyncReader});
  for (const ComPtr<IPin>& pin : AllPins(Splitter())) {
    const GUID& own = DirectionOf(pin.Get()) == PINDIR_INPUT ? IID_IPin : IID_IMediaSeeking;
    const GUID& foreign = DirectionOf(pin.Get()) == PINDIR_INPUT ? IID_IMediaSeeking : IID_IMemInputPin;
    ExpectOneObject(pin.Get(), {IID_IUnknown, IID_IPin, IID_IQualityControl, own},
                    {kUnheardOf, IID_IBaseFilter, foreign});
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

TEST_F(Interfaces, AnAggregatedFilterTakesTheIdentityOfItsOuterObjectAndGoesWithItsOwnReference) {
  Drop();
  Outer outer;
  void* filter = &outer;
  EXPECT_EQ(CreateSplitter(&outer, IID_IBaseFilter, &filter), E_NOINTERFACE) << "IUnknown must be the first";
  EXPECT_EQ(filter, nullptr);
  ASSERT_EQ(CreateSplitter(&outer, IID_IUnknown, outer.inner.PutVoid()), S_OK);
  ExpectOneObject(&outer, FilterInterfaces(), {kUnheardOf});
  {
    const ComPtr<IBaseFilter> inner = QueryFor<IBaseFilter>(static_cast<IUnknown*>(&outer));
    ASSERT_EQ(outer.references, 1U);
    const std::vector<ComPtr<IPin>> pins = AllPins(inner.Get());
    PIN_INFO info{};
    ASSERT_EQ(pins.at(0)->QueryPinInfo(&info), S_OK);
    EXPECT_TRUE(IsSameObject(ComPtr<IBaseFilter>::Attach(info.pFilter).Get(), &outer));
  }
  EXPECT_EQ(outer.references, 0U);
  EXPECT_FALSE(ModuleIsIdle());
  outer.inner.Reset();
  EXPECT_TRUE(ModuleBecomesIdle());
}

TEST_F(Interfaces, TheFactoryKnowsItsClassAloneAndKeepsTheModuleByALock) {
  Drop();
  ComPtr<IClassFactory> factory;
  EXPECT_EQ(GetClassObject(kUnheardOf, IID_IClassFactory, factory.PutVoid()), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_FALSE(factory);
  ASSERT_EQ(GetClassObject(CLSID_MatroskaSplitter, IID_IClassFactory, factory.PutVoid()), S_OK);
  EXPECT_EQ(factory->LockServer(TRUE), S_OK);
  factory.Reset();
  EXPECT_FALSE(ModuleIsIdle());
  ASSERT_EQ(GetClassObject(CLSID_MatroskaSplitter, IID_IClassFactory, factory.PutVoid()), S_OK);
  EXPECT_EQ(factory->LockServer(FALSE), S_OK);
}

}  // namespace
}  // namespace tarvex::test
