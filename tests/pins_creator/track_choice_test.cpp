// Which stream of each kind has the pin when a file is opened, the order of all streams, and the entry for no
// subtitles. What all tracks together give is the corpus's matter.
#include <gtest/gtest.h>

#include <sstream>

#include "filter/matroska_splitter.h"
#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/test_graph.h"

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

/// A graph with such a file, for a user of this language.
class Opened : public TestGraph {
 public:
  Opened(const char* userLanguage, const std::string& words) : TestGraph(LinkedSplitter()) {
    OverrideUserLanguageForTests(userLanguage);
    EXPECT_EQ(Open(SourceFilter::FromBytes(FileOf(words)).Get()), S_OK);
    OverrideUserLanguageForTests(nullptr);
  }

  /// Of the last pin, which gets the stream before.
  CMediaType TypeOf(LONG stream) const {
    EXPECT_EQ(QueryFor<IAMStreamSelect>(Splitter())->Enable(stream, AMSTREAMSELECTENABLE_ENABLE), S_OK);
    ComPtr<IEnumMediaTypes> types;
    AM_MEDIA_TYPE* type = nullptr;
    EXPECT_EQ(OutputPins().back()->EnumMediaTypes(types.Put()), S_OK);
    EXPECT_EQ(types->Next(1, &type, nullptr), S_OK);
    return CMediaType(*MediaTypePtr(type));
  }
  /// Kind and number of each, + for those that have the pin, "none" for the entry without subtitles.
  std::string Streams() const {
    const auto select = QueryFor<IAMStreamSelect>(Splitter());
    std::string all;
    DWORD flags = 0;
    CoTaskMem<WCHAR> wide;
    for (LONG k = 0; select->Info(k, nullptr, &flags, nullptr, nullptr, wide.Put(), nullptr, nullptr) == S_OK; ++k) {
      const std::string name = Utf8FromWide(wide.Get());
      all += name == "No Subtitles" ? "none" : name.substr(0, 1) + name.substr(3, name.find(" [") - 3);
      all += (flags & AMSTREAMSELECTINFO_ENABLED) != 0 ? "+ " : " ";
    }
    return all;
  }
};

TEST(TrackChoice, OneStreamOfEveryKindHasThePin) {
  struct Case {
    const char* what = nullptr;
    const char* tracks = nullptr;
    const char* streams = nullptr;
    const char* userLanguage = "German";
  };
  const Case cases[] = {
      {"the user's language", "S1:ger A2 A3:ger V4 V5", "V4+ V5 A2 A3+ S1+ none "},
      {"no subtitles", "V1 A2", "V1+ A2+ "},
      {"subtitles without flags start silent", "V1 S2~:ger S3~", "V1+ S2 S3 none+ "},
      {"silent is not the track of number zero", "V1 S0~", "V1+ S0 none+ "},
      {"silent below a higher number", "V1 S10~", "V1+ none+ S10 "},
      {"forced by any value but zero", "S1~ S2:ger~!! S3", "S1 S2+ S3 none "},
      {"the default flag alone", "A1~ A2~! A3", "A1 A2 A3+ "},
      {"the language beats it", "A1~ A3 A4:ger~", "A1 A3 A4+ "},
      {"both flags beat the language", "A3 A4:ger~ A5!", "A3 A4 A5+ "},
      {"language and forced beat all", "A4:ger~ A5! A6:ger~!", "A4 A5 A6+ "},
      {"languages are compared exactly", "A1~ A2:GER~ A3:ger-AT~ A4:deu~", "A1+ A2 A3 A4 "},
      {"a language of several names", "A1 A2:kir", "A1 A2+ ", "Kyrgyz"},
      {"a name that is that of no language", "A1:spa~ A2:en", "A1 A2+ ", "Spanish; Castilian"},
      {"a user language that no table knows", "A1:ger~ A2~ A3", "A1 A2 A3+ ", "Klingonese"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(Opened(each.userLanguage, each.tracks).Streams(), each.streams) << each.what;
  }
}

TEST(TrackChoice, NoSubtitlesLookLikeTheChosenOnes) {
  const Opened opened("German", "V1 S2~ S3:ger");
  EXPECT_EQ(opened.Streams(), "V1+ S2 S3+ none ");
  EXPECT_TRUE(opened.TypeOf(3) == opened.TypeOf(2));
  EXPECT_FALSE(opened.TypeOf(3) == opened.TypeOf(1));
}

}  // namespace
}  // namespace tarvex::test
