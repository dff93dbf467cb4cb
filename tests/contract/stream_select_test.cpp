// IAMStreamSelect: what is listed, how it is named, what carries what, and switching in a graph that
// renders the pin into a filter that is there for it.
#include <map>
#include <vector>

#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

class StreamSelect : public GraphTest {
 protected:
  void Open(const char* file) {
    ASSERT_EQ(Graph().Open(CorpusFile(file)), S_OK);
    m_select = Ask<IAMStreamSelect>();
    ASSERT_TRUE(m_select);
  }
  void TearDown() override {
    m_select.Reset();
    GraphTest::TearDown();
  }

  LONG Count() {
    DWORD count = 0;
    EXPECT_EQ(m_select->Count(&count), S_OK);
    return static_cast<LONG>(count);
  }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (LONG index = 0; index < Count(); ++index) {
      CoTaskMem<WCHAR> name;
      EXPECT_EQ(m_select->Info(index, nullptr, nullptr, nullptr, nullptr, name.Put(), nullptr, nullptr), S_OK);
      names.push_back(name ? Utf8FromWide(name.Get()) : std::string());
    }
    return names;
  }
  bool IsEnabled(LONG index) {
    DWORD flags = 99;
    EXPECT_EQ(m_select->Info(index, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr), S_OK);
    return flags == AMSTREAMSELECTINFO_ENABLED;
  }

  HRESULT Enable(LONG index) { return m_select->Enable(index, AMSTREAMSELECTENABLE_ENABLE); }

  ComPtr<IAMStreamSelect> m_select;
};

TEST_F(StreamSelect, NamesTellKindTrackNameAndLanguage) {
  Open("multi.mkv");
  const std::vector<std::string> expected = {"V: Main [Undetermined]",
                                             "V:  [German]",
                                             "A: First line [English]",
                                             "A: Zweite Zeile: Übermut [German]",
                                             "A:  [Japanese]",
                                             "S:  [English]",
                                             "S:  [French]",
                                             "S:  [Japanese]",
                                             "No Subtitles"};
  EXPECT_EQ(Names(), expected);
  ASSERT_EQ(Graph().CloseSource(), S_OK);
  Open("flags_names.mkv");
  const std::vector<std::string> names = Names();
  EXPECT_EQ((std::vector<std::string>(names.begin() + 1, names.begin() + 4)),
            (std::vector<std::string>{"A: 終章", "A: ", "S: "}))
      << "a language that is no code of three letters is left out";
}

TEST_F(StreamSelect, InfoPastTheEndTouchesNoOutputAndKnowsOneObject) {
  m_select = Ask<IAMStreamSelect>();
  EXPECT_EQ(Count(), 0);
  Open("multi.mkv");
  DWORD flags = 7;
  DWORD group = 7;
  LCID locale = 7;
  WCHAR text = 0;
  WCHAR* name = &text;
  for (const LONG index : {-1, 9, 0x7FFFFFFF}) {
    EXPECT_EQ(m_select->Info(index, nullptr, &flags, &locale, &group, &name, nullptr, nullptr), S_FALSE);
  }
  EXPECT_EQ(flags, 7u);
  EXPECT_EQ(group, 7u);
  EXPECT_EQ(locale, 7u);
  EXPECT_EQ(name, &text);
  ComPtr<IUnknown> object;
  auto* unknown = static_cast<IUnknown*>(Splitter());
  EXPECT_EQ(m_select->Info(0, nullptr, nullptr, &locale, nullptr, nullptr, object.Put(), &unknown), S_OK);
  EXPECT_EQ(object, QueryFor<IUnknown>(Splitter()));
  EXPECT_EQ(unknown, nullptr);
  EXPECT_EQ(locale, 0u);
}

TEST_F(StreamSelect, GroupsAreTheTrackTypesWithOneStreamEnabledOfEach) {
  Open("multi.mkv");
  std::map<DWORD, int> streams;
  std::map<DWORD, int> enabled;
  for (LONG index = 0; index < Count(); ++index) {
    DWORD group = 0;
    EXPECT_EQ(m_select->Info(index, nullptr, nullptr, nullptr, &group, nullptr, nullptr, nullptr), S_OK);
    ++streams[group];
    enabled[group] += IsEnabled(index) ? 1 : 0;
  }
  EXPECT_EQ(streams, (std::map<DWORD, int>{{1, 2}, {2, 3}, {17, 4}}));
  EXPECT_EQ(enabled, (std::map<DWORD, int>{{1, 1}, {2, 1}, {17, 1}}));
  ASSERT_EQ(Graph().SeparatePins(true), S_OK);
  EXPECT_EQ(Count(), 8);
  for (LONG index = 0; index < Count(); ++index) EXPECT_TRUE(IsEnabled(index)) << index;
}

TEST_F(StreamSelect, EnableMovesAnUnconnectedPinToTheStream) {
  Open("multi.mkv");
  ComPtr<IEnumMediaTypes> types;
  ASSERT_EQ(Graph().OutputPins().back()->EnumMediaTypes(types.Put()), S_OK);
  for (const LONG index : {5, 5, 6, 7, 8, 5}) {
    EXPECT_EQ(Enable(index), S_OK);
    for (LONG other = 5; other <= 8; ++other) EXPECT_EQ(IsEnabled(other), other == index) << index << " " << other;
  }
  EXPECT_EQ(types->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(m_select->Enable(5, 0), E_NOTIMPL);
  EXPECT_EQ(m_select->Enable(5, AMSTREAMSELECTENABLE_ENABLEALL), E_NOTIMPL);
  EXPECT_EQ(Enable(9), E_INVALIDARG);
  EXPECT_EQ(Enable(-1), E_INVALIDARG);
}

class StreamSwitch : public StreamSelect {
 protected:
  static constexpr LONG kGermanAudio = 3;
  static constexpr LONG kJapaneseAudio = 4;

  void SetUp() override {
    Open("multi.mkv");
    ASSERT_EQ(Enable(kJapaneseAudio), S_OK);
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
    m_spare = SinkFilter::Create(SinkKind::kCounting);
    ASSERT_EQ(Graph().Graph()->AddFilter(m_spare.Get(), OLESTR("Spare")), S_OK);
  }
  void TearDown() override {
    Graph().Stop();
    m_spare->Pin()->Disconnect();
    Graph().Graph()->RemoveFilter(m_spare.Get());
    m_spare.Reset();
    StreamSelect::TearDown();
  }

  void ExpectSwitchIn(OAFilterState state) {
    EXPECT_EQ(Enable(kGermanAudio), S_OK);
    EXPECT_TRUE(IsEnabled(kGermanAudio));
    EXPECT_FALSE(IsEnabled(kJapaneseAudio));
    EXPECT_TRUE(IsConnected(m_spare->Pin()));
    EXPECT_FALSE(IsConnected(Graph().Sink(1).Pin())) << "the old stream's renderer is still connected";
    OAFilterState now = State_Stopped;
    EXPECT_TRUE(SUCCEEDED(QueryFor<IMediaControl>(Graph().Graph())->GetState(2000, &now)));
    EXPECT_EQ(now, state);
  }

  ComPtr<SinkFilter> m_spare;
};

TEST_F(StreamSwitch, WhileStopped) { ExpectSwitchIn(State_Stopped); }

TEST_F(StreamSwitch, WhileRunning) {
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  ExpectSwitchIn(State_Running);
  EXPECT_TRUE(m_spare->WaitForEnd(kPatience));
}

TEST_F(StreamSwitch, WhilePaused) {
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  ExpectSwitchIn(State_Paused);
}

}  // namespace
}  // namespace tarvex::test
