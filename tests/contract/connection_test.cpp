// Connecting and disconnecting, in every order that must be refused and in those that must not.
#include "framework/text_conversion.h"
#include "tests/contract/contract_fixture.h"
#include "tests/support/log_capture.h"

namespace tarvex::test {
namespace {

class Connecting : public ContractTest {
 protected:
  // The answer of the splitter itself, without a connecting pin's own opinion about it.
  static HRESULT Receive(TestGraph& graph, CSourceFilter& source) {
    const CMediaType type(MEDIATYPE_Stream);
    return graph.InputPin()->ReceiveConnection(source.Pin(), &type);
  }
  static void ExpectNothingOpen(TestGraph& graph) {
    EXPECT_FALSE(IsConnected(graph.InputPin().Get()));
    EXPECT_TRUE(graph.OutputPins().empty());
  }
  static void ExpectStillUsable(TestGraph& graph) {
    const auto source = CSourceFilter::FromBytes(MakeMovie({}));
    ASSERT_EQ(graph.Open(source.Get()), S_OK);
    EXPECT_EQ(graph.OutputPins().size(), 2U);
  }
};

using ConnectingOutputs = OpenedTest;

TEST_F(Connecting, WhatIsNotMatroskaIsRefusedWithAText) {
  TestGraph graph;
  LogCapture log(graph.Splitter());
  const auto source = CSourceFilter::FromBytes(std::vector<std::uint8_t>(4000, 0x42));
  EXPECT_EQ(Receive(graph, *source), VFW_E_TYPE_NOT_ACCEPTED);
  EXPECT_TRUE(log.Contains("<CEbmlScanner::CanProcess> No segment/level 0 element found")) << log.Joined();
  ExpectNothingOpen(graph);
  ExpectStillUsable(graph);
}

TEST_F(Connecting, AnEmptyFileIsRefused) {
  TestGraph graph;
  const auto source = CSourceFilter::FromBytes({});
  EXPECT_EQ(Receive(graph, *source), VFW_E_TYPE_NOT_ACCEPTED);
  ExpectNothingOpen(graph);
}

TEST_F(Connecting, APinWithoutReaderIsRefused) {
  TestGraph graph;
  const auto source = CSourceFilter::FromBytes(MakeMovie({}));
  source->Pin()->HideReader();
  EXPECT_EQ(Receive(graph, *source), E_NOINTERFACE);
  ExpectNothingOpen(graph);
  ExpectStillUsable(graph);
}

TEST_F(Connecting, ASourceThatCannotBeReadIsRefused) {
  TestGraph graph;
  const auto source = CSourceFilter::FromBytes(MakeMovie({}));
  source->FailFrom(0, E_FAIL);
  EXPECT_TRUE(FAILED(Receive(graph, *source)));
  ExpectNothingOpen(graph);
  ExpectStillUsable(graph);
}

TEST_F(Connecting, ASourceWithoutTypesIsAskedWithOurs) {
  TestGraph graph;
  const auto source = CSourceFilter::FromBytes(MakeMovie({}));
  source->Pin()->HideTypes();
  EXPECT_EQ(graph.Open(source.Get()), S_OK);
}

TEST_F(ConnectingOutputs, AConnectedInputPinIsRefused) {
  const auto other = CSourceFilter::FromBytes(MakeMovie({}));
  const CMediaType type(MEDIATYPE_Stream);
  EXPECT_EQ(Graph().InputPin()->ReceiveConnection(other->Pin(), &type), VFW_E_ALREADY_CONNECTED);
  EXPECT_EQ(Graph().OutputPins().size(), 2U);
}

TEST_F(ConnectingOutputs, AConnectedOutputPinIsRefused) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  const auto sink = CSinkFilter::Create(SinkKind::kCounting);
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), VFW_E_ALREADY_CONNECTED);
  EXPECT_FALSE(IsConnected(sink->Pin()));
}

TEST_F(ConnectingOutputs, NothingConnectsOrDisconnectsUnlessStopped) {
  ASSERT_EQ(Graph().ConnectSink(Output(1).Get(), SinkKind::kCounting), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  const auto sink = CSinkFilter::Create(SinkKind::kCounting);
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), VFW_E_NOT_STOPPED);
  EXPECT_EQ(Output(1)->Disconnect(), VFW_E_NOT_STOPPED);
  EXPECT_EQ(Graph().InputPin()->Disconnect(), VFW_E_NOT_STOPPED);
  ASSERT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), S_OK);
  EXPECT_EQ(Output(0)->Disconnect(), S_OK);
  EXPECT_EQ(sink->Pin()->Disconnect(), S_OK);
}

TEST_F(ConnectingOutputs, AnUnopenedRunningFilterTakesNoSource) {
  TestGraph graph;
  ASSERT_TRUE(SUCCEEDED(graph.Splitter()->Pause()));
  const auto source = CSourceFilter::FromBytes(MakeMovie({}));
  const CMediaType type(MEDIATYPE_Stream);
  EXPECT_EQ(graph.InputPin()->ReceiveConnection(source->Pin(), &type), VFW_E_NOT_STOPPED);
  EXPECT_TRUE(SUCCEEDED(graph.Splitter()->Stop()));
}

TEST_F(ConnectingOutputs, TwoOutputPinsDoNotConnect) {
  EXPECT_EQ(Output(0)->Connect(Output(1).Get(), nullptr), VFW_E_INVALID_DIRECTION);
  EXPECT_FALSE(IsConnected(Output(0).Get()));
  EXPECT_FALSE(IsConnected(Output(1).Get()));
}

TEST_F(ConnectingOutputs, ASinkThatAcceptsNothingIsRefused) {
  const auto sink = CSinkFilter::Create(SinkKind::kCounting);
  sink->Pin()->RefuseTypes();
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
  EXPECT_FALSE(IsConnected(Output(0).Get()));
  EXPECT_FALSE(IsConnected(sink->Pin()));
  EXPECT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
}

TEST_F(ConnectingOutputs, AForeignTypeIsRefused) {
  const auto sink = CSinkFilter::Create(SinkKind::kCounting);
  CMediaType type = TypeOf(Output(1).Get());
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), &type), VFW_E_TYPE_NOT_ACCEPTED);
  EXPECT_FALSE(IsConnected(sink->Pin()));
}

TEST_F(ConnectingOutputs, NullPeersAreErrors) {
  EXPECT_EQ(Output(0)->Connect(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(Graph().InputPin()->ReceiveConnection(nullptr, nullptr), E_POINTER);
}

TEST_F(ConnectingOutputs, BothSidesKnowTheConnection) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  for (const ComPtr<IPin>& pin : Graph().OutputPins()) {
    const ComPtr<IPin> peer = PeerOf(pin.Get());
    ASSERT_TRUE(peer);
    EXPECT_EQ(PeerOf(peer.Get()).Get(), pin.Get());
  }
}

TEST_F(ConnectingOutputs, DisconnectingTwiceIsNoError) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  EXPECT_EQ(Output(0)->Disconnect(), S_OK);
  EXPECT_EQ(Output(0)->Disconnect(), S_FALSE);
  EXPECT_EQ(PeerOf(Output(0).Get()).Get(), nullptr);
}

TEST_F(ConnectingOutputs, ClosingTheSourceFreesEverySink) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_EQ(Graph().CloseSource(), S_OK);
  EXPECT_TRUE(Graph().OutputPins().empty());
  for (const auto& sink : Graph().Sinks()) EXPECT_FALSE(IsConnected(sink->Pin()));
}

TEST_F(ConnectingOutputs, AnotherSourceCanBeOpenedAfterwards) {
  ASSERT_EQ(Graph().CloseSource(), S_OK);
  const auto other = CSourceFilter::FromBytes(MakeMovie({.videos = 0, .audios = 3}));
  ASSERT_EQ(Graph().Open(other.Get()), S_OK);
  ASSERT_EQ(Graph().OutputPins().size(), 3U);
  EXPECT_EQ(NameOf(Output(2).Get()), "Audio 2 (lang:eng)");
}

TEST_F(ConnectingOutputs, AnAllocatorOfOursIsUsedReadOnly) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ComPtr<IMemAllocator> allocator;
  ASSERT_EQ(Graph().Sink(0).Pin()->GetAllocator(allocator.Put()), S_OK);
  ALLOCATOR_PROPERTIES properties{};
  ASSERT_EQ(allocator->GetProperties(&properties), S_OK);
  EXPECT_EQ(properties.cBuffers, 200);
  EXPECT_EQ(properties.cbBuffer, 52428);
  EXPECT_TRUE(Graph().Sink(0).Pin()->IsReadOnly());
}

}  // namespace
}  // namespace tarvex::test
