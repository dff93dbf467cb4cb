// IAMStreamSelect while no pin is connected: what is listed, how it is named, what carries what.
#include <map>
#include <vector>

#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/filter/filter_fixture.h"

namespace tarvex::test {
namespace {

class StreamSelect : public FilterTest {
 protected:
  void Open(const char* file) {
    ASSERT_EQ(Graph().Open(CorpusFile(file)), S_OK);
    m_select = Ask<IAMStreamSelect>();
    ASSERT_TRUE(m_select);
  }
  void TearDown() override {
    m_select.Reset();
    FilterTest::TearDown();
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
  DWORD Group(LONG index) {
    DWORD group = 0;
    EXPECT_EQ(m_select->Info(index, nullptr, nullptr, nullptr, &group, nullptr, nullptr, nullptr), S_OK);
    return group;
  }
  bool IsEnabled(LONG index) {
    DWORD flags = 99;
    EXPECT_EQ(m_select->Info(index, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr), S_OK);
    return flags == AMSTREAMSELECTINFO_ENABLED;
  }

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
}

TEST_F(StreamSelect, LanguageThatIsNoThreeLetterCodeIsLeftOut) {
  Open("flags_names.mkv");
  const std::vector<std::string> names = Names();
  EXPECT_EQ((std::vector<std::string>(names.begin() + 1, names.begin() + 4)),
            (std::vector<std::string>{"A: 終章", "A: ", "S: "}));
}

TEST_F(StreamSelect, NothingIsListedBeforeAFileIsOpened) {
  m_select = Ask<IAMStreamSelect>();
  EXPECT_EQ(Count(), 0);
  EXPECT_EQ(m_select->Info(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), S_FALSE);
}

TEST_F(StreamSelect, InfoPastTheEndTouchesNoOutput) {
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
}

TEST_F(StreamSelect, InfoGivesTheFilterWithAReferenceAndNoOtherObject) {
  Open("multi.mkv");
  ComPtr<IUnknown> object;
  auto* unknown = static_cast<IUnknown*>(Splitter());
  LCID locale = 7;
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
    ++streams[Group(index)];
    enabled[Group(index)] += IsEnabled(index) ? 1 : 0;
  }
  EXPECT_EQ(streams, (std::map<DWORD, int>{{1, 2}, {2, 3}, {17, 4}}));
  EXPECT_EQ(enabled, (std::map<DWORD, int>{{1, 1}, {2, 1}, {17, 1}}));
}

TEST_F(StreamSelect, SeparatePinsCarryEveryRealStream) {
  ASSERT_EQ(Graph().SeparatePins(true), S_OK);
  Open("multi.mkv");
  EXPECT_EQ(Count(), 8);
  for (LONG index = 0; index < Count(); ++index) EXPECT_TRUE(IsEnabled(index)) << index;
}

TEST_F(StreamSelect, EnableMovesAnUnconnectedPinToTheStream) {
  Open("multi.mkv");
  ComPtr<IEnumMediaTypes> types;
  ASSERT_EQ(Graph().OutputPins().back()->EnumMediaTypes(types.Put()), S_OK);
  for (const LONG index : {5, 5, 6, 7, 8, 5}) {
    EXPECT_EQ(m_select->Enable(index, AMSTREAMSELECTENABLE_ENABLE), S_OK);
    for (LONG other = 5; other <= 8; ++other) EXPECT_EQ(IsEnabled(other), other == index) << index << " " << other;
  }
  EXPECT_EQ(types->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
}

TEST_F(StreamSelect, EnableRefusesWhatItCannotDo) {
  Open("multi.mkv");
  EXPECT_EQ(m_select->Enable(5, 0), E_NOTIMPL);
  EXPECT_EQ(m_select->Enable(5, AMSTREAMSELECTENABLE_ENABLEALL), E_NOTIMPL);
  EXPECT_EQ(m_select->Enable(9, AMSTREAMSELECTENABLE_ENABLE), E_INVALIDARG);
  EXPECT_EQ(m_select->Enable(-1, AMSTREAMSELECTENABLE_ENABLE), E_INVALIDARG);
}

}  // namespace
}  // namespace tarvex::test
