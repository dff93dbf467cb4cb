// IAMStreamSelect: what is listed and how it is named, which stream of each kind has the pin when a file is opened, and
// switching of pins that are not connected. tests/data/streams.txt has the lists.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "filter/matroska_splitter.h"
#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

/// From words such as "V1 A2:ger S3~! S4!!": kind, number and language; ~ without the default flag, ! with
/// the forced one, !! with one of a large value. A track is named by its number.
ByteString FileOf(const std::string& words) {
  ByteString entries;
  std::istringstream stream(words);
  for (std::string word; stream >> word;) {
    const std::size_t flags = std::min(word.find_first_of("~!"), word.size());
    const std::size_t colon = std::min(word.find(':'), flags);
    const std::string number = word.substr(1, colon - 1);
    const std::string language = colon < flags ? word.substr(colon + 1, flags - colon - 1) : "eng";
    const std::uint64_t forced = word.ends_with("!!") ? std::uint64_t{1} << 40 : word.ends_with('!') ? 1 : 0;
    const ByteString more = Join(
        {Text(id::kTrackName, number), Text(id::kLanguage, language),
         word.find('~') != std::string::npos ? Unsigned(id::kFlagDefault, 0) : ByteString{},
         Unsigned(id::kFlagForced, forced),
         word[0] == 'V' ? Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 16), Unsigned(id::kPixelHeight, 16)}))
                        : Text(id::kCodecPrivate, "header " + number)});
    const std::uint64_t type = word[0] == 'V' ? 1 : word[0] == 'A' ? 2 : 17;
    const char* codec = type == 1 ? "V_VP8" : type == 2 ? "A_TTA1" : "S_TEXT/UTF8";
    entries = Join({entries, TrackEntry(std::stoull(number), type, codec, more)});
  }
  return MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, entries), Cluster(0, {})}));
}

// Not the module's, whose user cannot be told a language.
ComPtr<IBaseFilter> LinkedSplitter() {
  HRESULT result = S_OK;
  return ComPtr<IUnknown>(CMatroskaSplitter::CreateInstance(nullptr, &result)->Inner()).Query<IBaseFilter>();
}

/// A graph with a file of the corpus or of such words, for a user of this language.
class Opened : public TestGraph {
 public:
  Opened(const std::string& userLanguage, const std::string& file) : TestGraph(LinkedSplitter()) {
    OverrideUserLanguageForTests(userLanguage.c_str());
    const std::string folder = SystemPath(SourceDir() + "/tests/data/corpus/gen/");
    EXPECT_EQ(file.ends_with(".mkv") ? Open(folder + file) : Open(SourceFilter::FromBytes(FileOf(file)).Get()), S_OK);
    OverrideUserLanguageForTests(nullptr);
    select = QueryFor<IAMStreamSelect>(Splitter());
  }

  CMediaType TypeOfTheLastPin() const {
    ComPtr<IEnumMediaTypes> types;
    AM_MEDIA_TYPE* type = nullptr;
    EXPECT_EQ(OutputPins().back()->EnumMediaTypes(types.Put()), S_OK);
    EXPECT_EQ(types->Next(1, &type, nullptr), S_OK);
    return CMediaType(*MediaTypePtr(type));
  }
  /// Group and name of each, + in front of those that have a pin.
  std::string Streams() const {
    std::string all;
    DWORD count = 0;
    EXPECT_EQ(select->Count(&count), S_OK);
    for (DWORD k = 0; k < count; ++k) {
      DWORD flags = 0;
      DWORD group = 0;
      CoTaskMem<WCHAR> name;
      EXPECT_EQ(select->Info(static_cast<LONG>(k), nullptr, &flags, nullptr, &group, name.Put(), nullptr, nullptr),
                S_OK);
      all += flags == AMSTREAMSELECTINFO_ENABLED ? " | +" : " | ";
      all += std::to_string(group) + ' ' + Utf8FromWide(name.Get());
    }
    return all;
  }
  HRESULT Enable(LONG index, DWORD flags = AMSTREAMSELECTENABLE_ENABLE) { return select->Enable(index, flags); }

  ComPtr<IAMStreamSelect> select;
};

TEST(StreamList, IsAsTheTableSays) {
  std::ifstream table(SystemPath(SourceDir() + "/tests/data/streams.txt"));
  int rows = 0;
  for (std::string file, streams; std::getline(table, file);) {
    if (file.starts_with('#')) continue;
    ASSERT_TRUE(std::getline(table, streams)) << file;
    const std::size_t colon = file.find(": ");
    EXPECT_EQ(Opened(file.substr(0, colon), file.substr(colon + 2)).Streams(), streams) << file;
    ++rows;
  }
  EXPECT_GT(rows, 15);
}

TEST(StreamList, EnableMovesAnUnconnectedPinToTheStreamAndWhatIsNoneTouchesNothing) {
  constexpr LONG kFirst = 5;  // of the subtitles
  constexpr LONG kNone = 8;   // looks like the chosen ones
  Opened opened("German", "multi.mkv");
  ComPtr<IUnknown> object;
  EXPECT_EQ(opened.select->Info(0, nullptr, nullptr, nullptr, nullptr, nullptr, object.Put(), nullptr), S_OK);
  EXPECT_EQ(object, QueryFor<IUnknown>(opened.Splitter()));
  const CMediaType chosen = opened.TypeOfTheLastPin();
  ComPtr<IEnumMediaTypes> types;
  ASSERT_EQ(opened.OutputPins().back()->EnumMediaTypes(types.Put()), S_OK);
  for (const LONG index : {kFirst, kFirst, kNone, kNone - 1}) {
    EXPECT_EQ(opened.Enable(index), S_OK);
    for (LONG other = kFirst; other <= kNone; ++other) {
      DWORD flags = 0;
      opened.select->Info(other, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr);
      EXPECT_EQ(flags == AMSTREAMSELECTINFO_ENABLED, other == index) << index;
    }
    EXPECT_EQ(opened.TypeOfTheLastPin() == chosen, index == kNone);
  }
  EXPECT_EQ(types->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(opened.Enable(6, AMSTREAMSELECTENABLE_ENABLEALL), E_NOTIMPL);
  const std::string before = opened.Streams();
  for (const LONG index : {-1, 9, 0x7FFFFFFF}) {
    DWORD flags = 7;
    EXPECT_EQ(opened.select->Info(index, nullptr, &flags, nullptr, nullptr, nullptr, nullptr, nullptr), S_FALSE);
    EXPECT_EQ(flags, 7U);
    EXPECT_EQ(opened.Enable(index), E_INVALIDARG);
  }
  EXPECT_EQ(opened.Streams(), before);
  EXPECT_EQ(opened.SeparatePins(true), S_OK);
  EXPECT_EQ(std::ranges::count(opened.Streams(), '+'), 8) << "each has a pin, and nothing stands for no subtitles";
}

}  // namespace
}  // namespace tarvex::test
