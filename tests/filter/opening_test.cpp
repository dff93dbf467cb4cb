// Opening and closing a source through the input pin, and the pins that come and go with it.
#include "tests/filter/filter_fixture.h"

namespace tarvex::test {
namespace {

struct Refusal {
  const char* file;
  const char* message;
};

class Refused : public FilterTest, public testing::WithParamInterface<Refusal> {};

TEST_P(Refused, FileLeavesItsReasonInTheLogAndNothingOpen) {
  {
    LogCapture log(Splitter());
    EXPECT_TRUE(FAILED(Graph().Open(CorpusFile(GetParam().file))));
    EXPECT_TRUE(log.Contains(GetParam().message)) << log.Joined();
  }
  EXPECT_FALSE(IsConnected(Graph().InputPin().Get()));
  EXPECT_TRUE(Graph().OutputPins().empty());
  DWORD streams = 99;
  EXPECT_EQ(Ask<IAMStreamSelect>()->Count(&streams), S_OK);
  EXPECT_EQ(streams, 0u);

  Graph().CloseSource();
  EXPECT_EQ(Graph().Open(CorpusFile("aac.mka")), S_OK) << "a refusal spoils the filter for the next file";
}

constexpr const char* kNoSegment = "<CEbmlScanner::CanProcess> No segment/level 0 element found";
INSTANTIATE_TEST_SUITE_P(
    Files, Refused,
    testing::Values(Refusal{"not_matroska.mkv", kNoSegment}, Refusal{"header_only.mkv", kNoSegment},
                    Refusal{"empty.mkv", kNoSegment},
                    Refusal{"track_no_type.mkv", "COutPinsCreator::CreatePin failed get track type"},
                    Refusal{"track_no_number.mkv", "COutPinsCreator::CreatePin failed get track_number"},
                    Refusal{"track_type3.mkv", "COutPinsCreator::CreatePin  unknown type"},
                    Refusal{"codec_unknown_video.mkv", "<COutPinsCreator::createVideoPin> unknown codec id"}),
    [](const auto& instance) {
      const std::string name = instance.param.file;
      return name.substr(0, name.find('.'));
    });

class Opening : public FilterTest {};

TEST_F(Opening, PeerWithoutAReaderIsRefusedWithItsCode) {
  const auto source = CSourceFilter::FromBytes(MakeMovie({}));
  source->Pin()->HideReader();
  CMediaType type(MEDIATYPE_Stream);
  EXPECT_EQ(Graph().InputPin()->ReceiveConnection(source->Pin(), &type), E_NOINTERFACE);
  EXPECT_FALSE(IsConnected(Graph().InputPin().Get()));
}

TEST_F(Opening, AFileThatIsNoMatroskaIsATypeNotAccepted) {
  const auto source = CSourceFilter::FromFile(CorpusFile("not_matroska.mkv"));
  CMediaType type(MEDIATYPE_Stream);
  EXPECT_EQ(Graph().InputPin()->ReceiveConnection(source->Pin(), &type), VFW_E_TYPE_NOT_ACCEPTED);
}

TEST_F(Opening, AFileWithoutTracksHasTheInputPinAlone) {
  ASSERT_EQ(Graph().Open(CorpusFile("no_tracks.mkv")), S_OK);
  EXPECT_EQ(PinsOf(Splitter()).size(), 1u);
}

TEST_F(Opening, EveryOpeningMakesItsOwnPins) {
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  EXPECT_EQ(Graph().OutputPins().size(), 3u);
  Graph().CloseSource();
  EXPECT_TRUE(Graph().OutputPins().empty());
  ASSERT_EQ(Graph().Open(CorpusFile("aac.mka")), S_OK);
  EXPECT_EQ(Graph().OutputPins().size(), 1u);
}

TEST_F(Opening, DisconnectingTheInputDisconnectsTheOutputsFromBothEnds) {
  OpenMovie({});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  const std::vector<ComPtr<IPin>> outputs = Graph().OutputPins();
  EXPECT_EQ(Graph().InputPin()->Disconnect(), S_OK);
  for (const auto& sink : Graph().Sinks()) EXPECT_FALSE(IsConnected(sink->Pin()));
  for (const auto& pin : outputs) EXPECT_FALSE(IsConnected(pin.Get()));
  EXPECT_EQ(PinsOf(Splitter()).size(), 1u);
}

TEST_F(Opening, AnActiveFilterRefusesToLoseItsSource) {
  OpenMovie({});
  ASSERT_EQ(Splitter()->Pause(), S_OK);
  EXPECT_EQ(Graph().InputPin()->Disconnect(), VFW_E_NOT_STOPPED);
  EXPECT_EQ(Graph().OutputPins().size(), 2u);
  Splitter()->Stop();
}

}  // namespace
}  // namespace tarvex::test
