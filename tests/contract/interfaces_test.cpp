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

ComPtr<IUnknown> Ask(IUnknown* object, const GUID& iid) {
  ComPtr<IUnknown> answer;
  object->QueryInterface(iid, answer.PutVoid());
  return answer;
}

// From every interface every other is reached, and all have one IUnknown.
void ExpectOneObject(IUnknown* object, const std::vector<GUID>& interfaces) {
  const ComPtr<IUnknown> identity = Ask(object, IID_IUnknown);
  for (const GUID& from : interfaces) {
    const ComPtr<IUnknown> start = Ask(object, from);
    ASSERT_TRUE(start) << "interface " << std::hex << from.Data1;
    EXPECT_EQ(Ask(start.Get(), IID_IUnknown).Get(), identity.Get());
    for (const GUID& to : interfaces) EXPECT_TRUE(Ask(start.Get(), to)) << std::hex << from.Data1 << " " << to.Data1;
  }
}

void ExpectRefusal(IUnknown* object, const GUID& iid) {
  void* answer = object;
  EXPECT_EQ(object->QueryInterface(iid, &answer), E_NOINTERFACE) << std::hex << iid.Data1;
  EXPECT_EQ(answer, nullptr);
}

const std::vector<GUID>& FilterInterfaces() {
  static const std::vector<GUID> all = {
      IID_IUnknown,        IID_IPersist,      IID_IMediaFilter,       IID_IBaseFilter, IID_IAMovieSetup,
      IID_IAMStreamSelect, IID_IModuleConfig, IID_IAMExtendedSeeking, IID_IModuleLog,  IID_IPersistStream};
  return all;
}

using Interfaces = OpenedTest;

TEST_F(Interfaces, TheFilterIsOneObjectOfItsClass) {
  CLSID clsid{};
  EXPECT_EQ(Graph().Splitter()->GetClassID(&clsid), S_OK);
  EXPECT_EQ(clsid, CLSID_MatroskaSplitter);
  ExpectOneObject(Graph().Splitter(), FilterInterfaces());
  for (const GUID& iid : {kUnheardOf, IID_IPin, IID_IMemInputPin, IID_IAsyncReader}) {
    ExpectRefusal(Graph().Splitter(), iid);
  }
}

TEST_F(Interfaces, EveryPinIsOneObject) {
  for (const ComPtr<IPin>& pin : AllPins(Splitter())) {
    const bool isInput = DirectionOf(pin.Get()) == PINDIR_INPUT;
    ExpectOneObject(pin.Get(), {IID_IUnknown, IID_IPin, IID_IQualityControl, isInput ? IID_IPin : IID_IMediaSeeking});
    for (const GUID& iid : {kUnheardOf, IID_IBaseFilter, isInput ? IID_IMediaSeeking : IID_IMemInputPin}) {
      ExpectRefusal(pin.Get(), iid);
    }
    EXPECT_EQ(pin->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  }
  EXPECT_EQ(Splitter()->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

// The outer object of an aggregation: shares its identity with the splitter inside. Lives on a test's
// stack, so its count only tells whether all references came back.
class Outer : public IUnknown {  // NOLINT(cppcoreguidelines-virtual-class-destructor)
 public:
  HRESULT Aggregate() { return CreateSplitter(this, IID_IUnknown, m_inner.PutVoid()); }
  void Drop() { m_inner.Reset(); }
  ULONG References() const { return m_references; }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (iid != IID_IUnknown) return m_inner->QueryInterface(iid, out);
    return GiveInterface(this, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
  ULONG STDMETHODCALLTYPE Release() override { return --m_references; }

 private:
  ComPtr<IUnknown> m_inner;
  std::atomic<ULONG> m_references{0};
};

using Aggregation = ContractTest;

TEST_F(Aggregation, TheFirstInterfaceMustBeIUnknown) {
  Outer outer;
  void* filter = &outer;
  EXPECT_EQ(CreateSplitter(&outer, IID_IBaseFilter, &filter), E_NOINTERFACE);
  EXPECT_EQ(filter, nullptr);
}

TEST_F(Aggregation, TheFilterTakesTheIdentityOfItsOuterObjectAndGoesWithItsOwnReference) {
  Outer outer;
  ASSERT_EQ(outer.Aggregate(), S_OK);
  ExpectOneObject(&outer, FilterInterfaces());
  EXPECT_EQ(outer.References(), 0U);
  EXPECT_FALSE(ModuleIsIdle());
  outer.Drop();
  EXPECT_TRUE(ModuleBecomesIdle());
}

TEST_F(Aggregation, ReferencesAreCountedOnTheOuterObject) {
  Outer outer;
  ASSERT_EQ(outer.Aggregate(), S_OK);
  ComPtr<IBaseFilter> filter = QueryFor<IBaseFilter>(static_cast<IUnknown*>(&outer));
  ASSERT_TRUE(filter);
  const ULONG before = outer.References();
  filter->AddRef();
  EXPECT_EQ(outer.References(), before + 1);
  filter->Release();
  const std::vector<ComPtr<IPin>> pins = AllPins(filter.Get());
  PIN_INFO info{};
  ASSERT_EQ(pins.at(0)->QueryPinInfo(&info), S_OK);
  const auto owner = ComPtr<IBaseFilter>::Attach(info.pFilter);
  EXPECT_TRUE(IsSameObject(owner.Get(), &outer));
}

using Factory = ContractTest;

TEST_F(Factory, KnowsItsClassAloneAndKeepsTheModuleByALock) {
  ComPtr<IClassFactory> factory;
  EXPECT_EQ(GetClassObject(kUnheardOf, IID_IClassFactory, factory.PutVoid()), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_FALSE(factory);
  ASSERT_EQ(GetClassObject(CLSID_MatroskaSplitter, IID_IClassFactory, factory.PutVoid()), S_OK);
  EXPECT_EQ(factory->LockServer(TRUE), S_OK);
  EXPECT_FALSE(ModuleIsIdle());
  EXPECT_EQ(factory->LockServer(FALSE), S_OK);
}

}  // namespace
}  // namespace tarvex::test
