// IAMStreamSelect: what is listed, how it is named, what carries what, and switching of pins that are not connected.
#include <map>
#include <vector>

#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

/// All that Info tells of a stream.
struct Stream {
  std::string name;
  DWORD group = 0;
  bool isEnabled = false;
};

class StreamSelect : public GraphTest {
 protected:
  void OpenFile(const char* file) {
    Graph().CloseSource();
    ASSERT_EQ(Graph().Open(CorpusFile(file)), S_OK);
  }
  std::vector<Stream> Streams() {
    DWORD count = 0;
    EXPECT_EQ(Ask<IAMStreamSelect>()->Count(&count), S_OK);
    std::vector<Stream> streams;
    for (LONG index = 0; index < static_cast<LONG>(count); ++index) {
      CoTaskMem<WCHAR> name;
      Stream& stream = streams.emplace_back();
      DWORD flags = 99;
      EXPECT_EQ(Info(index, &flags, &stream.group, name.Put()), S_OK);
      stream.name = Utf8FromWide(name.Get());
      stream.isEnabled = flags == AMSTREAMSELECTINFO_ENABLED;
      EXPECT_TRUE(stream.isEnabled || flags == 0);
    }
    return streams;
  }
  HRESULT Info(LONG index, DWORD* flags, DWORD* group, WCHAR** name) {
    return Ask<IAMStreamSelect>()->Info(index, nullptr, flags, nullptr, group, name, nullptr, nullptr);
  }
  HRESULT Enable(LONG index, DWORD flags = AMSTREAMSELECTENABLE_ENABLE) {
    return Ask<IAMStreamSelect>()->Enable(index, flags);
  }
};

TEST_F(StreamSelect, NamesTellKindTrackNameAndLanguageInGroupsWithOneEnabledOfEach) {
  EXPECT_TRUE(Streams().empty());
  OpenFile("multi.mkv");
  const char* const expected[] = {"V: Main [Undetermined]",
                                  "V:  [German]",
                                  "A: First line [English]",
                                  "A: Zweite Zeile: Übermut [German]",
                                  "A:  [Japanese]",
                                  "S:  [English]",
                                  "S:  [French]",
                                  "S:  [Japanese]",
                                  "No Subtitles"};
  std::map<DWORD, int> streams;
  std::map<DWORD, int> enabled;
  std::vector<std::string> names;
  for (const Stream& stream : Streams()) {
    names.push_back(stream.name);
    ++streams[stream.group];
    enabled[stream.group] += stream.isEnabled ? 1 : 0;
  }
  EXPECT_EQ(names, std::vector<std::string>(std::begin(expected), std::end(expected)));
  EXPECT_EQ(streams, (std::map<DWORD, int>{{1, 2}, {2, 3}, {17, 4}}));
  EXPECT_EQ(enabled, (std::map<DWORD, int>{{1, 1}, {2, 1}, {17, 1}}));
  ASSERT_EQ(Graph().SeparatePins(true), S_OK);
  EXPECT_EQ(Streams().size(), 8U);
  for (const Stream& stream : Streams()) EXPECT_TRUE(stream.isEnabled) << stream.name;

  ComPtr<IUnknown> object;
  EXPECT_EQ(Ask<IAMStreamSelect>()->Info(0, nullptr, nullptr, nullptr, nullptr, nullptr, object.Put(), nullptr), S_OK);
  EXPECT_EQ(object, QueryFor<IUnknown>(Splitter()));
  OpenFile("flags_names.mkv");
  EXPECT_EQ(Streams().at(1).name, "A: 終章");
  EXPECT_EQ(Streams().at(2).name, "A: ") << "a language that is no code of three letters is left out";
}

TEST_F(StreamSelect, EnableMovesAnUnconnectedPinToTheStreamAndWhatIsNoneTouchesNothing) {
  OpenFile("multi.mkv");
  ComPtr<IEnumMediaTypes> types;
  ASSERT_EQ(Graph().OutputPins().back()->EnumMediaTypes(types.Put()), S_OK);
  for (const std::size_t index : {5U, 5U, 6U, 7U, 8U, 5U}) {
    EXPECT_EQ(Enable(static_cast<LONG>(index)), S_OK);
    for (std::size_t other = 5; other <= 8; ++other) EXPECT_EQ(Streams().at(other).isEnabled, other == index) << index;
  }
  EXPECT_EQ(types->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(Enable(6, AMSTREAMSELECTENABLE_ENABLEALL), E_NOTIMPL);
  for (const LONG index : {-1, 9, 0x7FFFFFFF}) {
    DWORD flags = 7;
    DWORD group = 7;
    WCHAR text = 0;
    WCHAR* name = &text;
    EXPECT_EQ(Info(index, &flags, &group, &name), S_FALSE);
    EXPECT_TRUE(flags == 7 && group == 7 && name == &text);
    EXPECT_EQ(Enable(index), E_INVALIDARG);
  }
  EXPECT_TRUE(Streams().at(5).isEnabled);
}

}  // namespace
}  // namespace tarvex::test
