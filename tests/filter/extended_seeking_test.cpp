// IAMExtendedSeeking: capabilities and chapters as markers.
#include "framework/bstr.h"
#include "framework/text_conversion.h"
#include "tests/filter/filter_fixture.h"

namespace tarvex::test {
namespace {

struct CapabilityCase {
  const char* file;
  LONG capabilities;
};

class ExtendedSeekingCapabilities : public FilterTest, public testing::WithParamInterface<CapabilityCase> {};

TEST_P(ExtendedSeekingCapabilities, FollowFromVideoAndChapters) {
  ASSERT_EQ(Graph().Open(CorpusFile(GetParam().file)), S_OK);
  LONG capabilities = 0;
  EXPECT_EQ(Ask<IAMExtendedSeeking>()->get_ExSeekCapabilities(&capabilities), S_OK);
  EXPECT_EQ(capabilities, GetParam().capabilities);
  EXPECT_EQ(Ask<IAMExtendedSeeking>()->get_ExSeekCapabilities(nullptr), S_OK);
}

INSTANTIATE_TEST_SUITE_P(Files, ExtendedSeekingCapabilities,
                         testing::Values(CapabilityCase{"chapters_edges.mkv", 69}, CapabilityCase{"multi.mkv", 65},
                                         CapabilityCase{"aac.mka", 49}));

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

  double Time(LONG number) {
    double time = -7;
    EXPECT_EQ(m_seeking->GetMarkerTime(number, &time), S_OK);
    return time;
  }
  std::string Name(LONG number) {
    BStr name;
    EXPECT_EQ(m_seeking->GetMarkerName(number, name.Put()), S_OK);
    return name.Get() == nullptr ? "nothing" : Utf8FromWide(name.View());
  }

  ComPtr<IAMExtendedSeeking> m_seeking;
};

TEST_F(Markers, AreTheChaptersInOrder) {
  LONG count = 0;
  EXPECT_EQ(m_seeking->get_MarkerCount(&count), S_OK);
  EXPECT_EQ(count, 5);
  EXPECT_EQ(Name(1), "first child");
  EXPECT_EQ(Name(4), "");
  EXPECT_EQ(Name(5), "hidden");
}

TEST_F(Markers, TimesAreWholeSeconds) {
  EXPECT_EQ(Time(2), 0.0);
  EXPECT_EQ(Time(4), 1.0);  // 1.9999999 s
  EXPECT_EQ(Time(5), 2.0);
}

TEST_F(Markers, NumbersOutOfRangeLeaveTheOutputAlone) {
  for (const LONG number : {0, 6, -1, 0x7FFFFFFF}) {
    EXPECT_EQ(Time(number), -7);
    EXPECT_EQ(Name(number), "nothing");
  }
  EXPECT_EQ(m_seeking->GetMarkerTime(1, nullptr), S_OK);
  EXPECT_EQ(m_seeking->GetMarkerName(1, nullptr), S_OK);
  EXPECT_EQ(m_seeking->get_MarkerCount(nullptr), S_OK);
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
