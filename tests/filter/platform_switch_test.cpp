// A stream switched in the platform's own graph, which renders the pin into a filter that is there for
// it. Windows only.
#include "tests/filter/filter_fixture.h"

namespace tarvex::test {
namespace {

class PlatformSwitch : public FilterTest {
 protected:
  static constexpr LONG kGermanAudio = 3;
  static constexpr LONG kJapaneseAudio = 4;

  void SetUp() override {
    ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
    m_select = Ask<IAMStreamSelect>();
    ASSERT_EQ(m_select->Enable(kJapaneseAudio, AMSTREAMSELECTENABLE_ENABLE), S_OK);
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
    m_spare = CSinkFilter::Create(SinkKind::kCounting);
    ASSERT_EQ(Graph().Graph()->AddFilter(m_spare.Get(), OLESTR("Spare")), S_OK);
  }
  void TearDown() override {
    Graph().Stop();
    m_spare->Pin()->Disconnect();
    Graph().Graph()->RemoveFilter(m_spare.Get());
    m_spare.Reset();
    m_select.Reset();
    FilterTest::TearDown();
  }

  OAFilterState State() {
    OAFilterState state = State_Stopped;
    EXPECT_TRUE(SUCCEEDED(QueryFor<IMediaControl>(Graph().Graph())->GetState(2000, &state)));
    return state;
  }
  void ExpectSwitched() {
    DWORD flags = 0;
    EXPECT_EQ(m_select->Info(kGermanAudio, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(flags, static_cast<DWORD>(AMSTREAMSELECTINFO_ENABLED));
    EXPECT_TRUE(IsConnected(m_spare->Pin()));
    EXPECT_FALSE(IsConnected(Graph().Sink(1).Pin()));
  }

  ComPtr<IAMStreamSelect> m_select;
  ComPtr<CSinkFilter> m_spare;
};

TEST_F(PlatformSwitch, WhileStopped) {
  EXPECT_EQ(m_select->Enable(kGermanAudio, AMSTREAMSELECTENABLE_ENABLE), S_OK);
  ExpectSwitched();
  EXPECT_EQ(State(), State_Stopped);
}

TEST_F(PlatformSwitch, WhileRunning) {
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_EQ(m_select->Enable(kGermanAudio, AMSTREAMSELECTENABLE_ENABLE), S_OK);
  ExpectSwitched();
  EXPECT_EQ(State(), State_Running);
  EXPECT_TRUE(m_spare->WaitForEnd(kPatience));
}

TEST_F(PlatformSwitch, WhilePaused) {
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  EXPECT_EQ(m_select->Enable(kGermanAudio, AMSTREAMSELECTENABLE_ENABLE), S_OK);
  ExpectSwitched();
  EXPECT_EQ(State(), State_Paused);
}

}  // namespace
}  // namespace tarvex::test
