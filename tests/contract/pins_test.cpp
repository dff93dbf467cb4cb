// The pin list and the pins' answers about themselves.
#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

using UnopenedPins = ContractTest;
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

TEST_F(Pins, NextSkipResetAndCloneGoThroughTheList) {
  const ComPtr<IEnumPins> list = ListOf(Graph().Splitter());
  EXPECT_EQ(NextOf(list.Get()), "Input");
  ComPtr<IEnumPins> clone;
  ASSERT_EQ(list->Clone(clone.Put()), S_OK);
  EXPECT_EQ(NextOf(clone.Get()), "Video 0 (lang:eng)");
  EXPECT_EQ(NextOf(list.Get()), "Video 0 (lang:eng)");
  EXPECT_EQ(list->Skip(1), S_OK);
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
  EXPECT_EQ(list->Next(1, nullptr, nullptr), E_POINTER);
}

TEST_F(UnopenedPins, OpeningAndClosingPutEnumeratorsOutOfSync) {
  TestGraph graph;
  const ComPtr<IEnumPins> list = ListOf(graph.Splitter());
  const auto source = SourceFilter::FromBytes(MakeMovie({}));
  EXPECT_EQ(NextOf(list.Get()), "Input");
  EXPECT_EQ(NextOf(list.Get()), "nothing");
  ASSERT_EQ(graph.Open(source.Get()), S_OK);
  IPin* pin = nullptr;
  EXPECT_EQ(list->Next(1, &pin, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(list->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
  ComPtr<IEnumPins> clone;
  EXPECT_EQ(list->Clone(clone.Put()), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(list->Reset(), S_OK);
  ASSERT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
  EXPECT_EQ(list->Skip(3), S_OK) << "connecting an output pin changes no list";
  EXPECT_EQ(graph.CloseSource(), S_OK);
  EXPECT_EQ(list->Next(1, &pin, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
}

TEST_F(Pins, EveryPinKnowsItsFilterDirectionAndIdentifier) {
  for (const ComPtr<IPin>& pin : AllPins(Graph().Splitter())) {
    PIN_INFO info{};
    ASSERT_EQ(pin->QueryPinInfo(&info), S_OK);
    EXPECT_TRUE(IsSameObject(ComPtr<IBaseFilter>::Attach(info.pFilter).Get(), Graph().Splitter()));
    EXPECT_EQ(info.dir, DirectionOf(pin.Get()));
    EXPECT_EQ(info.dir == PINDIR_INPUT, NameOf(pin.Get()) == "Input");
    CoTaskMem<WCHAR> id;
    ASSERT_EQ(pin->QueryId(id.Put()), S_OK);
    ComPtr<IPin> found;
    EXPECT_EQ(Graph().Splitter()->FindPin(id.Get(), found.Put()), S_OK);
    EXPECT_EQ(found.Get(), pin.Get());
  }
  ComPtr<IPin> found;
  EXPECT_EQ(Graph().Splitter()->FindPin(OLESTR("Nobody"), found.Put()), VFW_E_NOT_FOUND);
  EXPECT_FALSE(found);
  ULONG count = 0;
  EXPECT_EQ(Graph().InputPin()->QueryInternalConnections(nullptr, &count), E_NOTIMPL);
}

TEST_F(Pins, NullArgumentsAreErrors) {
  IBaseFilter& filter = *Graph().Splitter();
  EXPECT_EQ(filter.EnumPins(nullptr), E_POINTER);
  EXPECT_EQ(filter.FindPin(OLESTR("Input"), nullptr), E_POINTER);
  EXPECT_EQ(filter.QueryFilterInfo(nullptr), E_POINTER);
  for (const ComPtr<IPin>& pin : AllPins(&filter)) {
    EXPECT_EQ(pin->QueryPinInfo(nullptr), E_POINTER);
    EXPECT_EQ(pin->QueryDirection(nullptr), E_POINTER);
    EXPECT_EQ(pin->QueryId(nullptr), E_POINTER);
    EXPECT_EQ(pin->ConnectedTo(nullptr), E_POINTER);
    EXPECT_EQ(pin->EnumMediaTypes(nullptr), E_POINTER);
  }
}

}  // namespace
}  // namespace tarvex::test
