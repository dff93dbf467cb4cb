// Connecting and disconnecting, in every order that must be refused and in those that must not.
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

using Connecting = GraphTest;
using ConnectingOutputs = OpenedTest;

// The answer of the splitter itself, without a connecting pin's own opinion about it.
HRESULT Receive(TestGraph& graph, IPin* connector) {
  const CMediaType type(MEDIATYPE_Stream);
  return graph.InputPin()->ReceiveConnection(connector, &type);
}

TEST_F(Connecting, UnusableSourceIsRefusedAndTheNextOneOpens) {
  OpenMovie({});
  const auto noise = SourceFilter::FromBytes(std::vector<std::uint8_t>(4000, 0x42));
  const auto noCodec = SourceFilter::FromFile(CorpusFile("codec_unknown_video.mkv"));  // refused after a track
  const auto noReading = SourceFilter::FromBytes(MakeMovie({}));
  noReading->Pin()->brokenFrom = 0;
  TestGraph graph;
  for (const auto& [connector, expected] : {std::pair<IPin*, HRESULT>{noise->Pin(), VFW_E_TYPE_NOT_ACCEPTED},
                                            {noCodec->Pin(), VFW_E_TYPE_NOT_ACCEPTED},
                                            {noReading->Pin(), VFW_E_TYPE_NOT_ACCEPTED},
                                            {Output(0).Get(), E_NOINTERFACE}}) {
    EXPECT_EQ(Receive(graph, connector), expected);
    EXPECT_FALSE(IsConnected(graph.InputPin().Get()));
    EXPECT_TRUE(graph.OutputPins().empty());
    DWORD streams = 99;
    EXPECT_EQ(QueryFor<IAMStreamSelect>(graph.Splitter())->Count(&streams), S_OK);
    EXPECT_EQ(streams, 0U);
    const auto good = SourceFilter::FromBytes(MakeMovie({}));
    ASSERT_EQ(graph.Open(good.Get()), S_OK);
    EXPECT_EQ(graph.OutputPins().size(), 2U);
    EXPECT_EQ(graph.CloseSource(), S_OK);
  }
  ASSERT_TRUE(SUCCEEDED(graph.Splitter()->Pause()));
  EXPECT_EQ(Receive(graph, noise->Pin()), VFW_E_NOT_STOPPED);
}

TEST_F(ConnectingOutputs, WhatCannotBeIsRefusedAndLeavesBothSidesAsTheyAre) {
  const auto sink = SinkFilter::Create(SinkKind::kCounting);
  const CMediaType foreign = TypeOf(Output(1).Get());
  const CMediaType partial(MEDIATYPE_Audio);
  EXPECT_EQ(Output(0)->Connect(Output(1).Get(), nullptr), VFW_E_INVALID_DIRECTION);
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), &foreign), VFW_E_TYPE_NOT_ACCEPTED);
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), &partial), VFW_E_NO_ACCEPTABLE_TYPES);
  for (const auto& [refused, answer, result] :
       {std::tuple{SinkCall::kConnection, VFW_E_TYPE_NOT_ACCEPTED, VFW_E_NO_ACCEPTABLE_TYPES},
        {SinkCall::kAllocator, E_ACCESSDENIED, E_ACCESSDENIED}}) {
    sink->BeforeEachCall([=](SinkCall call) { return call == refused ? answer : S_OK; });
    EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), result);
    for (IPin* pin : {Output(0).Get(), static_cast<IPin*>(sink->Pin())}) EXPECT_FALSE(IsConnected(pin));
  }
  sink->BeforeEachCall(nullptr);
  EXPECT_EQ(Output(1)->Connect(sink->Pin(), &partial), S_OK) << "a partial type that fits is enough";
  EXPECT_EQ(Output(1)->Disconnect(), S_OK);
  EXPECT_EQ(Output(1)->Disconnect(), S_FALSE);
  EXPECT_EQ(sink->Pin()->Disconnect(), S_OK);

  AM_MEDIA_TYPE none{};
  EXPECT_EQ(Output(1)->ConnectionMediaType(&none), VFW_E_NOT_CONNECTED);
  const ComPtr<IPin> pin = Output(1);
  ASSERT_EQ(Graph().ConnectSink(pin.Get(), SinkKind::kCounting), S_OK);
  SinkPin* peer = Graph().Sink(0).Pin();
  CMediaType ours;
  CMediaType theirs;
  ASSERT_EQ(pin->ConnectionMediaType(&ours), S_OK);
  ASSERT_EQ(peer->ConnectionMediaType(&theirs), S_OK);
  EXPECT_TRUE(ours == foreign && ours == theirs && peer->IsReadOnly());
  const auto other = SourceFilter::FromBytes(MakeMovie({}));
  EXPECT_EQ(Receive(Graph(), other->Pin()), VFW_E_ALREADY_CONNECTED);
  EXPECT_EQ(pin->Connect(sink->Pin(), nullptr), VFW_E_ALREADY_CONNECTED);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  EXPECT_EQ(Output(0)->Connect(sink->Pin(), nullptr), VFW_E_NOT_STOPPED);
  EXPECT_EQ(pin->Disconnect(), VFW_E_NOT_STOPPED);
  EXPECT_EQ(Graph().InputPin()->Disconnect(), VFW_E_NOT_STOPPED);
  ASSERT_TRUE(SUCCEEDED(Graph().Stop()));
  EXPECT_TRUE(IsConnected(pin.Get()) && !IsConnected(sink->Pin()));
  ASSERT_EQ(Graph().CloseSource(), S_OK);
  EXPECT_TRUE(Graph().OutputPins().empty());
  EXPECT_FALSE(IsConnected(pin.Get()) || IsConnected(peer));
}

}  // namespace
}  // namespace tarvex::test
