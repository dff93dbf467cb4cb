// IAMStreamSelect: what is listed, how it is named, what carries what, and switching of pins that are not connected.
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
  DWORD flags = 0;
  bool operator==(const Stream&) const = default;
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
    std::vector<Stream> streams(count);
    for (DWORD index = 0; index < count; ++index) {
      Stream& stream = streams[index];
      CoTaskMem<WCHAR> name;
      EXPECT_EQ(Info(static_cast<LONG>(index), &stream.flags, &stream.group, name.Put()), S_OK);
      stream.name = Utf8FromWide(name.Get());
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
  const std::vector<Stream> expected = {{"V: Main [Undetermined]", 1, 1},
                                        {"V:  [German]", 1, 0},
                                        {"A: First line [English]", 2, 1},
                                        {"A: Zweite Zeile: Übermut [German]", 2, 0},
                                        {"A:  [Japanese]", 2, 0},
                                        {"S:  [English]", 17, 0},
                                        {"S:  [French]", 17, 1},
                                        {"S:  [Japanese]", 17, 0},
                                        {"No Subtitles", 17, 0}};
  EXPECT_EQ(Streams(), expected);
  ComPtr<IUnknown> object;
  EXPECT_EQ(Ask<IAMStreamSelect>()->Info(0, nullptr, nullptr, nullptr, nullptr, nullptr, object.Put(), nullptr), S_OK);
  EXPECT_EQ(object, QueryFor<IUnknown>(Splitter()));
  ASSERT_EQ(Graph().SeparatePins(true), S_OK);
  EXPECT_EQ(Streams().size(), 8U);
  for (const Stream& stream : Streams()) EXPECT_EQ(stream.flags, AMSTREAMSELECTINFO_ENABLED) << stream.name;
  OpenFile("flags_names.mkv");
  EXPECT_EQ(Streams().at(1).name, "A: 終章");
  EXPECT_EQ(Streams().at(2).name, "A: ") << "a language that is no code of three letters is left out";
}

TEST_F(StreamSelect, EnableMovesAnUnconnectedPinToTheStreamAndWhatIsNoneTouchesNothing) {
  OpenFile("multi.mkv");
  ComPtr<IEnumMediaTypes> types;
  ASSERT_EQ(Graph().OutputPins().back()->EnumMediaTypes(types.Put()), S_OK);
  for (const std::size_t index : {5U, 5U, 8U, 7U}) {
    EXPECT_EQ(Enable(static_cast<LONG>(index)), S_OK);
    for (std::size_t other = 5; other <= 8; ++other) {
      EXPECT_EQ(Streams().at(other).flags == AMSTREAMSELECTINFO_ENABLED, other == index) << index;
    }
  }
  EXPECT_EQ(types->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(Enable(6, AMSTREAMSELECTENABLE_ENABLEALL), E_NOTIMPL);
  const std::vector<Stream> before = Streams();
  for (const LONG index : {-1, 9, 0x7FFFFFFF}) {
    DWORD flags = 7;
    EXPECT_EQ(Info(index, &flags, nullptr, nullptr), S_FALSE);
    EXPECT_EQ(flags, 7U);
    EXPECT_EQ(Enable(index), E_INVALIDARG);
  }
  EXPECT_EQ(Streams(), before);
}

}  // namespace
}  // namespace tarvex::test
