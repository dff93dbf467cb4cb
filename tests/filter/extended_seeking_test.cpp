// IAMExtendedSeeking: capabilities, and what it says to what is not there. The corpus tests compare the
// markers.
#include "framework/bstr.h"
#include "tests/filter/filter_fixture.h"

namespace tarvex::test {
namespace {

class Markers : public FilterTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(Graph().Open(CorpusFile("chapters_edges.mkv")), S_OK);
    m_seeking = Ask<IAMExtendedSeeking>();
    ASSERT_TRUE(m_seeking);
  }
  void TearDown() override {
    m_seeking.Reset();
    FilterTest::TearDown();
  }

  ComPtr<IAMExtendedSeeking> m_seeking;
};

TEST_F(Markers, CapabilitiesFollowFromVideoAndChapters) {
  for (const auto& [file, expected] : {std::pair{"chapters_edges.mkv", 69}, {"multi.mkv", 65}, {"aac.mka", 49}}) {
    Graph().CloseSource();
    ASSERT_EQ(Graph().Open(CorpusFile(file)), S_OK);
    LONG capabilities = 0;
    EXPECT_EQ(m_seeking->get_ExSeekCapabilities(&capabilities), S_OK);
    EXPECT_EQ(capabilities, expected) << file;
  }
}

TEST_F(Markers, NumbersOutOfRangeLeaveTheOutputAlone) {
  for (const LONG number : {0, 6, -1, 0x7FFFFFFF}) {
    double time = -7;
    BStr name;
    EXPECT_EQ(m_seeking->GetMarkerTime(number, &time), S_OK);
    EXPECT_EQ(m_seeking->GetMarkerName(number, name.Put()), S_OK);
    EXPECT_EQ(time, -7);
    EXPECT_EQ(name.Get(), nullptr);
  }
  EXPECT_EQ(m_seeking->GetMarkerTime(1, nullptr), S_OK);
  EXPECT_EQ(m_seeking->GetMarkerName(1, nullptr), S_OK);
  EXPECT_EQ(m_seeking->get_MarkerCount(nullptr), S_OK);
  EXPECT_EQ(m_seeking->get_ExSeekCapabilities(nullptr), S_OK);
}

TEST_F(Markers, WhatIsNotOfferedSaysSo) {
  LONG marker = 0;
  double speed = 0;
  UINT count = 0;
  EXPECT_EQ(m_seeking->get_CurrentMarker(&marker), E_NOTIMPL);
  EXPECT_EQ(m_seeking->put_PlaybackSpeed(1.0), E_NOTIMPL);
  EXPECT_EQ(m_seeking->get_PlaybackSpeed(&speed), E_NOTIMPL);
  EXPECT_EQ(m_seeking->GetTypeInfoCount(&count), E_NOTIMPL);
}

}  // namespace
}  // namespace tarvex::test
