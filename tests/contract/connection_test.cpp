// Connecting and disconnecting, in every order that must be refused and in those that must not.
#include "tests/contract/contract_fixture.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

using Connecting = ContractTest;
using ConnectingOutputs = OpenedTest;

// The answer of the splitter itself, without a connecting pin's own opinion about it.
HRESULT Receive(TestGraph& graph, SourceFilter& source) {
  const CMediaType type(MEDIATYPE_Stream);
  return graph.InputPin()->ReceiveConnection(source.Pin(), &type);
}

TEST_F(Connecting, UnusableSourceIsRefusedAndTheNextOneOpens) {
  const std::vector<std::uint8_t> noise(4000, 0x42);
  const std::vector<std::uint8_t> lateRefusal =  // after its first track
      ReadWholeFile(SystemPath(SourceDir() + "/tests/data/corpus/gen/codec_unknown_video.mkv"));
  const struct {
    const char* what;
    const std::vector<std::uint8_t>& bytes;
    void (*spoil)(SourceFilter&);
    HRESULT expected;
  } cases[] = {
      {"no Matroska", noise, [](SourceFilter&) {}, VFW_E_TYPE_NOT_ACCEPTED},
      {"no codec", lateRefusal, [](SourceFilter&) {}, VFW_E_TYPE_NOT_ACCEPTED},
      {"no reader", noise, [](SourceFilter& source) { source.Pin()->HideReader(); }, E_NOINTERFACE},
      {"no reading", noise, [](SourceFilter& source) { source.FailFrom(0, E_FAIL); }, VFW_E_TYPE_NOT_ACCEPTED},
  };
  TestGraph graph;
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    const auto bad = SourceFilter::FromBytes(each.bytes);
    each.spoil(*bad);
    EXPECT_EQ(Receive(graph, *bad), each.expected);
    EXPECT_FALSE(IsConnected(graph.InputPin().Get()));
    EXPECT_TRUE(graph.OutputPins().empty());
    DWORD streams = 99;
    EXPECT_EQ(QueryFor<IAMStreamSelect>(graph.Splitter())->Count(&streams), S_OK);
    EXPECT_EQ(streams, 0U);
    const auto source = SourceFilter::FromBytes(MakeMovie({}));
    ASSERT_EQ(graph.Open(source.Get()), S_OK);
    EXPECT_EQ(graph.OutputPins().size(), 2U);
    EXPECT_EQ(graph.CloseSource(), S_OK);
  }
}

TEST_F(Connecting, ASourceWithoutTypesIsAskedWithOurs) {
  TestGraph graph;
  const auto source = SourceFilter::FromBytes(MakeMovie({}));
  source->Pin()->HideTypes();
  EXPECT_EQ(graph.Open(source.Get()), S_OK);
}

TEST_F(Connecting, AnUnopenedRunningFilterTakesNoSource) {
  TestGraph graph;
  ASSERT_TRUE(SUCCEEDED(graph.Splitter()->Pause()));
  const auto source = SourceFilter::FromBytes(MakeMovie({}));
  EXPECT_EQ(Receive(graph, *source), VFW_E_NOT_STOPPED);
  EXPECT_TRUE(SUCCEEDED(graph.Splitter()->Stop()));
}

TEST_F(ConnectingOutputs, WhatCannotBeIsRefusedAndLeavesBothSidesFree) {
  const auto sink = SinkFilter::Create(SinkKind::kCounting);
  const CMediaType foreign = TypeOf(Output(1).Get());
  EXPECT_EQ(Output(0)->Connect(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(Graph().InputPin()->ReceiveConnection(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(Output(0)->Connect(Output(1).Get(), nullptr), VFW_E_INVALID_DIRECTION);
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), &foreign), VFW_E_TYPE_NOT_ACCEPTED);
  const auto picky = SinkFilter::Create(SinkKind::kCounting);
  picky->Pin()->RefuseAllocators();
  EXPECT_EQ(Output(0)->Connect(picky->Pin(), nullptr), E_ACCESSDENIED);
  EXPECT_FALSE(IsConnected(picky->Pin()));
  sink->Pin()->RefuseTypes();
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
  for (IPin* pin : {Output(0).Get(), Output(1).Get(), static_cast<IPin*>(sink->Pin())}) EXPECT_FALSE(IsConnected(pin));
  EXPECT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
}

TEST_F(ConnectingOutputs, ConnectedPinsRefuseAnotherPeer) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  const auto other = SourceFilter::FromBytes(MakeMovie({}));
  EXPECT_EQ(Receive(Graph(), *other), VFW_E_ALREADY_CONNECTED);
  EXPECT_EQ(Graph().OutputPins().size(), 2U);
  const auto sink = SinkFilter::Create(SinkKind::kCounting);
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), VFW_E_ALREADY_CONNECTED);
  EXPECT_FALSE(IsConnected(sink->Pin()));
}

TEST_F(ConnectingOutputs, NothingConnectsOrDisconnectsUnlessStopped) {
  ASSERT_EQ(Graph().ConnectSink(Output(1).Get(), SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  const auto sink = SinkFilter::Create(SinkKind::kCounting);
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), VFW_E_NOT_STOPPED);
  EXPECT_EQ(Output(1)->Disconnect(), VFW_E_NOT_STOPPED);
  EXPECT_EQ(Graph().InputPin()->Disconnect(), VFW_E_NOT_STOPPED);
  ASSERT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), S_OK);
  EXPECT_EQ(Output(0)->Disconnect(), S_OK);
  EXPECT_EQ(Output(0)->Disconnect(), S_FALSE);
  EXPECT_EQ(PeerOf(Output(0).Get()).Get(), nullptr);
  EXPECT_EQ(sink->Pin()->Disconnect(), S_OK);
}

TEST_F(ConnectingOutputs, BothSidesKnowPeerTypeAndAllocator) {
  CMediaType type(TypeOf(Output(0).Get()).majortype);
  EXPECT_EQ(Output(0)->ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  for (const ComPtr<IPin>& pin : Graph().OutputPins()) {
    const ComPtr<IPin> peer = PeerOf(pin.Get());
    ASSERT_TRUE(peer);
    EXPECT_EQ(PeerOf(peer.Get()).Get(), pin.Get());
    CMediaType ours;
    CMediaType theirs;
    ASSERT_EQ(pin->ConnectionMediaType(&ours), S_OK);
    ASSERT_EQ(peer->ConnectionMediaType(&theirs), S_OK);
    EXPECT_TRUE(ours == TypeOf(pin.Get()));
    EXPECT_TRUE(ours == theirs);
  }
  ComPtr<IMemAllocator> allocator;
  ASSERT_EQ(Graph().Sink(0).Pin()->GetAllocator(allocator.Put()), S_OK);
  ALLOCATOR_PROPERTIES properties{};
  ASSERT_EQ(allocator->GetProperties(&properties), S_OK);
  EXPECT_EQ(properties.cBuffers, 200);
  EXPECT_EQ(properties.cbBuffer, 52428);
  EXPECT_TRUE(Graph().Sink(0).Pin()->IsReadOnly());
}

TEST_F(ConnectingOutputs, APartialTypeThatFitsIsEnough) {
  const auto sink = SinkFilter::Create(SinkKind::kCounting);
  CMediaType partial(MEDIATYPE_Audio);
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), &partial), VFW_E_NO_ACCEPTABLE_TYPES);
  EXPECT_EQ(Output(1)->Connect(sink->Pin(), &partial), S_OK);
  EXPECT_EQ(Output(1)->Disconnect(), S_OK);
  EXPECT_EQ(sink->Pin()->Disconnect(), S_OK);
}

TEST_F(ConnectingOutputs, ClosingTheSourceFreesEverySinkForAnother) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  const std::vector<ComPtr<IPin>> former = Graph().OutputPins();
  ASSERT_EQ(Graph().CloseSource(), S_OK);
  EXPECT_TRUE(Graph().OutputPins().empty());
  for (const auto& sink : Graph().Sinks()) EXPECT_FALSE(IsConnected(sink->Pin()));
  for (const auto& pin : former) EXPECT_FALSE(IsConnected(pin.Get()));
  const auto other = SourceFilter::FromBytes(MakeMovie({.videos = 0, .audios = 3}));
  ASSERT_EQ(Graph().Open(other.Get()), S_OK);
  ASSERT_EQ(Graph().OutputPins().size(), 3U);
  EXPECT_EQ(NameOf(Output(2).Get()), "Audio 2 (lang:eng)");
}

}  // namespace
}  // namespace tarvex::test
