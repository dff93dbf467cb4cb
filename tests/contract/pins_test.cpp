// The pin list, the media types that pins offer and accept, and the pins' answers about themselves.
#include "framework/co_task_mem.h"
#include "include/tarvex/class_ids.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

using Pins = OpenedTest;

ComPtr<IEnumPins> ListOf(IBaseFilter* filter) {
  ComPtr<IEnumPins> list;
  EXPECT_EQ(filter->EnumPins(list.Put()), S_OK);
  return list;
}

std::string NextOf(IEnumPins* list) {
  ComPtr<IPin> pin;
  return list->Next(1, pin.Put(), nullptr) == S_OK ? NameOf(pin.Get()) : "nothing";
}

TEST_F(Pins, TheListIsGoneThroughUntilAnotherOneIsThere) {
  const ComPtr<IEnumPins> list = ListOf(Splitter());
  EXPECT_EQ(NextOf(list.Get()), "Input");
  ComPtr<IEnumPins> clone;
  ASSERT_EQ(list->Clone(clone.Put()), S_OK);
  EXPECT_EQ(NextOf(clone.Get()), "Video 0 (lang:eng)");
  EXPECT_EQ(NextOf(list.Get()), "Video 0 (lang:eng)");
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  EXPECT_EQ(list->Skip(1), S_OK) << "connecting an output pin changes no list";
  EXPECT_EQ(list->Skip(1), S_FALSE);
  EXPECT_EQ(list->Reset(), S_OK);
  IPin* pins[8] = {};
  ULONG fetched = 99;
  EXPECT_EQ(list->Next(8, pins, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 3U);
  EXPECT_EQ(NameOf(pins[2]), "Audio 0 (lang:eng)");
  for (ULONG k = 0; k < fetched; ++k) ComPtr<IPin>::Attach(pins[k]);
  EXPECT_EQ(list->Next(1, pins, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0U);
  EXPECT_EQ(list->Next(2, pins, nullptr), E_INVALIDARG);

  ASSERT_EQ(Graph().CloseSource(), S_OK);
  EXPECT_EQ(list->Next(1, pins, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(list->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(list->Clone(clone.Put()), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(list->Reset(), S_OK);
  EXPECT_EQ(NextOf(list.Get()), "Input");
  EXPECT_EQ(NextOf(list.Get()), "nothing");
}

TEST_F(Pins, EachKnowsItsFilterAndOffersOneTypeAndAnOutputAcceptsNoOther) {
  ComPtr<IPin> found;
  EXPECT_EQ(Splitter()->FindPin(OLESTR("Nobody"), found.Put()), VFW_E_NOT_FOUND);
  EXPECT_EQ(Splitter()->FindPin(nullptr, found.Put()), E_POINTER);
  for (const ComPtr<IPin>& pin : AllPins(Splitter())) {
    PIN_INFO info{};
    ASSERT_EQ(pin->QueryPinInfo(&info), S_OK);
    EXPECT_TRUE(IsSameObject(ComPtr<IBaseFilter>::Attach(info.pFilter).Get(), Splitter()));
    EXPECT_EQ(info.dir == PINDIR_INPUT, NameOf(pin.Get()) == "Input");
    CoTaskMem<WCHAR> id;
    ASSERT_EQ(pin->QueryId(id.Put()), S_OK);
    EXPECT_EQ(Splitter()->FindPin(id.Get(), found.Put()), S_OK);
    EXPECT_EQ(found.Get(), pin.Get());

    ComPtr<IEnumMediaTypes> list;
    ASSERT_EQ(pin->EnumMediaTypes(list.Put()), S_OK);
    AM_MEDIA_TYPE* types[4] = {};
    ULONG fetched = 0;
    EXPECT_EQ(list->Next(4, types, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 1U);
    const CMediaType own(*MediaTypePtr(types[0]));
    EXPECT_EQ(list->Reset(), S_OK);
    EXPECT_EQ(list->Skip(1), S_OK);
    ComPtr<IEnumMediaTypes> clone;
    ASSERT_EQ(list->Clone(clone.Put()), S_OK);
    EXPECT_EQ(clone->Next(1, types, nullptr), S_FALSE);

    EXPECT_EQ(pin->QueryAccept(&own), S_OK);
    if (info.dir == PINDIR_INPUT) {
      EXPECT_TRUE(own.majortype == MEDIATYPE_Stream && own.subtype == MEDIASUBTYPE_MatroskaStream);
      continue;
    }
    for (const auto change : {+[](CMediaType& type) { type.subtype = MEDIASUBTYPE_RGB24; },
                              +[](CMediaType& type) { type.formattype = GUID_NULL; },
                              +[](CMediaType& type) { ++type.lSampleSize; }, +[](CMediaType& type) { --type.cbFormat; },
                              +[](CMediaType& type) { type.pbFormat[type.cbFormat - 1] ^= 1U; }}) {
      CMediaType type(own);
      change(type);
      EXPECT_EQ(pin->QueryAccept(&type), S_FALSE);
    }
  }
}

}  // namespace
}  // namespace tarvex::test
