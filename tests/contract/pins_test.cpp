// The pin list and the pins' answers about themselves.
#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

using Pins = OpenedTest;

ComPtr<IEnumPins> ListOf(IBaseFilter* filter) {
  ComPtr<IEnumPins> list;
  EXPECT_EQ(filter->EnumPins(list.Put()), S_OK);
  return list;
}

ComPtr<IPin> NextOf(IEnumPins* list) {
  ComPtr<IPin> pin;
  list->Next(1, pin.Put(), nullptr);
  return pin;
}

WideString IdOf(IPin* pin) {
  LPWSTR id = nullptr;
  EXPECT_EQ(pin->QueryId(&id), S_OK);
  WideString text = id == nullptr ? WideString() : WideString(id);
  CoTaskMemFree(id);
  return text;
}

class UnopenedPins : public ContractTest {};

TEST_F(UnopenedPins, ThereIsOneInputPinAlone) {
  TestGraph graph;
  const std::vector<ComPtr<IPin>> pins = PinsOf(graph.Splitter());
  ASSERT_EQ(pins.size(), 1U);
  EXPECT_EQ(DirectionOf(pins[0].Get()), PINDIR_INPUT);
  EXPECT_EQ(NameOf(pins[0].Get()), "Input");
}

TEST_F(Pins, OutputPinsFollowTheInputPinInTrackOrder) {
  const std::vector<ComPtr<IPin>> pins = PinsOf(Graph().Splitter());
  ASSERT_EQ(pins.size(), 3U);
  EXPECT_EQ(DirectionOf(pins[0].Get()), PINDIR_INPUT);
  EXPECT_EQ(NameOf(pins[1].Get()), "Video 0 (lang:eng)");
  EXPECT_EQ(NameOf(pins[2].Get()), "Audio 0 (lang:eng)");
}

TEST_F(Pins, NextGivesAsManyAsThereAre) {
  const ComPtr<IEnumPins> list = ListOf(Graph().Splitter());
  IPin* pins[8] = {};
  ULONG fetched = 99;
  EXPECT_EQ(list->Next(8, pins, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 3U);
  for (ULONG k = 0; k < fetched; ++k) ComPtr<IPin>::Attach(pins[k]);
  EXPECT_EQ(list->Next(1, pins, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0U);
}

TEST_F(Pins, NextForSeveralNeedsACount) {
  const ComPtr<IEnumPins> list = ListOf(Graph().Splitter());
  IPin* pins[2] = {};
  EXPECT_EQ(list->Next(2, pins, nullptr), E_INVALIDARG);
  EXPECT_EQ(list->Next(1, nullptr, nullptr), E_POINTER);
}

TEST_F(Pins, SkipAndResetMoveThePosition) {
  const ComPtr<IEnumPins> list = ListOf(Graph().Splitter());
  EXPECT_EQ(list->Skip(2), S_OK);
  EXPECT_EQ(NameOf(NextOf(list.Get()).Get()), "Audio 0 (lang:eng)");
  EXPECT_EQ(list->Skip(1), S_FALSE);
  EXPECT_EQ(list->Reset(), S_OK);
  EXPECT_EQ(NameOf(NextOf(list.Get()).Get()), "Input");
}

TEST_F(Pins, ACloneGoesOnFromTheSamePlaceByItself) {
  const ComPtr<IEnumPins> list = ListOf(Graph().Splitter());
  list->Skip(1);
  ComPtr<IEnumPins> clone;
  ASSERT_EQ(list->Clone(clone.Put()), S_OK);
  EXPECT_EQ(NameOf(NextOf(clone.Get()).Get()), "Video 0 (lang:eng)");
  EXPECT_EQ(NameOf(NextOf(clone.Get()).Get()), "Audio 0 (lang:eng)");
  EXPECT_EQ(NameOf(NextOf(list.Get()).Get()), "Video 0 (lang:eng)");
}

TEST_F(UnopenedPins, OpeningAndClosingPutEnumeratorsOutOfSync) {
  TestGraph graph;
  const ComPtr<IEnumPins> list = ListOf(graph.Splitter());
  const auto source = CSourceFilter::FromBytes(MakeMovie({}));
  ASSERT_EQ(graph.Open(source.Get()), S_OK);
  IPin* pin = nullptr;
  EXPECT_EQ(list->Next(1, &pin, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(list->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
  ComPtr<IEnumPins> clone;
  EXPECT_EQ(list->Clone(clone.Put()), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(list->Reset(), S_OK);
  EXPECT_EQ(list->Skip(3), S_OK);
  EXPECT_EQ(graph.CloseSource(), S_OK);
  EXPECT_EQ(list->Next(1, &pin, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
}

TEST_F(Pins, ConnectingAnOutputPinKeepsEnumeratorsValid) {
  const ComPtr<IEnumPins> list = ListOf(Graph().Splitter());
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  EXPECT_EQ(list->Skip(3), S_OK);
}

TEST_F(Pins, EveryPinIsFoundByItsIdentifier) {
  for (const ComPtr<IPin>& pin : PinsOf(Graph().Splitter())) {
    ComPtr<IPin> found;
    EXPECT_EQ(Graph().Splitter()->FindPin(IdOf(pin.Get()).c_str(), found.Put()), S_OK);
    EXPECT_EQ(found.Get(), pin.Get());
  }
}

TEST_F(Pins, AnUnknownIdentifierIsNotFound) {
  ComPtr<IPin> found;
  EXPECT_EQ(Graph().Splitter()->FindPin(OLESTR("Nobody"), found.Put()), VFW_E_NOT_FOUND);
  EXPECT_FALSE(found);
}

TEST_F(Pins, EveryPinKnowsItsFilterAndDirection) {
  for (const ComPtr<IPin>& pin : PinsOf(Graph().Splitter())) {
    PIN_INFO info{};
    ASSERT_EQ(pin->QueryPinInfo(&info), S_OK);
    const auto owner = ComPtr<IBaseFilter>::Attach(info.pFilter);
    EXPECT_TRUE(IsSameObject(owner.Get(), Graph().Splitter()));
    EXPECT_EQ(info.dir, DirectionOf(pin.Get()));
  }
}

TEST_F(Pins, TheFilterKnowsItsGraphAndName) {
  FILTER_INFO info{};
  ASSERT_EQ(Graph().Splitter()->QueryFilterInfo(&info), S_OK);
  const auto owner = ComPtr<IFilterGraph>::Attach(info.pGraph);
  EXPECT_TRUE(IsSameObject(owner.Get(), Graph().Graph()));
  EXPECT_EQ(WideString(info.achName), OLESTR("Splitter"));
}

TEST_F(Pins, NullArgumentsAreErrors) {
  IBaseFilter& filter = *Graph().Splitter();
  EXPECT_EQ(filter.EnumPins(nullptr), E_POINTER);
  EXPECT_EQ(filter.FindPin(OLESTR("Input"), nullptr), E_POINTER);
  EXPECT_EQ(filter.QueryFilterInfo(nullptr), E_POINTER);
  for (const ComPtr<IPin>& pin : PinsOf(&filter)) {
    EXPECT_EQ(pin->QueryPinInfo(nullptr), E_POINTER);
    EXPECT_EQ(pin->QueryDirection(nullptr), E_POINTER);
    EXPECT_EQ(pin->QueryId(nullptr), E_POINTER);
    EXPECT_EQ(pin->ConnectedTo(nullptr), E_POINTER);
    EXPECT_EQ(pin->EnumMediaTypes(nullptr), E_POINTER);
  }
}

TEST_F(Pins, InternalConnectionsAreNotTold) {
  ULONG count = 0;
  EXPECT_EQ(Graph().InputPin()->QueryInternalConnections(nullptr, &count), E_NOTIMPL);
}

}  // namespace
}  // namespace tarvex::test
