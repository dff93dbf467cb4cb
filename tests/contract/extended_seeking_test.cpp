// IAMExtendedSeeking: capabilities, and what it says to what is not there. The corpus tests compare the
// markers.
#include "framework/bstr.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

using Markers = GraphTest;

TEST_F(Markers, CapabilitiesFollowFromVideoAndChapters) {
  for (const auto& [file, expected] : {std::pair{"chapters_edges.mkv", 69}, {"multi.mkv", 65}, {"aac.mka", 49}}) {
    ASSERT_EQ(Graph().Open(CorpusFile(file)), S_OK);
    LONG capabilities = 0;
    EXPECT_EQ(Ask<IAMExtendedSeeking>()->get_ExSeekCapabilities(&capabilities), S_OK);
    EXPECT_EQ(capabilities, expected) << file;
    Graph().CloseSource();
  }
}

TEST_F(Markers, NumbersOutOfRangeLeaveTheOutputAloneAndWhatIsNotOfferedSaysSo) {
  ASSERT_EQ(Graph().Open(CorpusFile("chapters_edges.mkv")), S_OK);
  const auto seeking = Ask<IAMExtendedSeeking>();
  for (const LONG number : {0, 6, -1, 0x7FFFFFFF}) {
    double time = -7;
    BStr name;
    EXPECT_EQ(seeking->GetMarkerTime(number, &time), S_OK);
    EXPECT_EQ(seeking->GetMarkerName(number, name.Put()), S_OK);
    EXPECT_EQ(time, -7);
    EXPECT_EQ(name.Get(), nullptr);
  }
  EXPECT_EQ(seeking->GetMarkerTime(1, nullptr), S_OK);
  EXPECT_EQ(seeking->GetMarkerName(1, nullptr), S_OK);
  EXPECT_EQ(seeking->get_MarkerCount(nullptr), S_OK);
  EXPECT_EQ(seeking->get_ExSeekCapabilities(nullptr), S_OK);
  LONG marker = 0;
  double speed = 0;
  UINT count = 0;
  EXPECT_EQ(seeking->get_CurrentMarker(&marker), E_NOTIMPL);
  EXPECT_EQ(seeking->put_PlaybackSpeed(1.0), E_NOTIMPL);
  EXPECT_EQ(seeking->get_PlaybackSpeed(&speed), E_NOTIMPL);
  EXPECT_EQ(seeking->GetTypeInfoCount(&count), E_NOTIMPL);
}

}  // namespace
}  // namespace tarvex::test
