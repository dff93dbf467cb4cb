// IAMStreamSelect: what is listed and how it is named, which stream of each kind has the pin when a file is opened, and
// switching of pins that are not connected. And the media type of each codec. The lists are those of tests/data.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <map>
#include <sstream>

#include "filter/matroska_splitter.h"
#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "tests/corpus/type_text.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/log_capture.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

ByteString FromHex(const std::string& text) {
  ByteString bytes;
  for (std::size_t k = 0; k + 1 < text.size(); k += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(k, 2), nullptr, 16)));
  }
  return bytes;
}

/// A track as a line of a table describes it: type, codec, and elements.
ByteString TrackOf(std::istream& words) {
  static const std::map<std::string, std::uint32_t> kNumbers = {
      {"duration", id::kDefaultDuration}, {"default", id::kFlagDefault}, {"forced", id::kFlagForced}};
  static const std::map<std::string, std::uint32_t> kDetails = {
      {"width", id::kPixelWidth}, {"height", id::kPixelHeight}, {"display_width", 0x54B0},
      {"display_height", 0x54BA}, {"channels", id::kChannels},  {"bits", id::kBitDepth}};
  std::uint64_t type = 0;
  std::uint64_t number = 1;
  std::string codec;
  words >> type >> codec;
  ByteString track;
  ByteString details;
  for (std::string word; words >> word && word != ";";) {
    const std::string name = word.substr(0, word.find('='));
    const std::string value = word.substr(name.size() + 1);
    if (kNumbers.contains(name)) track = Join({track, Unsigned(kNumbers.at(name), std::stoull(value))});
    if (kDetails.contains(name)) details = Join({details, Unsigned(kDetails.at(name), std::stoull(value))});
    if (name == "rate") details = Join({details, Float(id::kSamplingFrequency, std::stod(value))});
    if (name == "number") number = std::stoull(value);
    if (name == "name") track = Join({track, Text(id::kTrackName, value)});
    if (name == "language") track = Join({track, Text(id::kLanguage, value)});
    if (name == "private") track = Join({track, Element(id::kCodecPrivate, FromHex(value))});
  }
  return TrackEntry(number, type, codec, Join({track, Element(type == 1 ? id::kVideo : id::kAudio, details)}));
}

/// A file with the tracks that a line describes.
ByteString FileOf(const std::string& line) {
  std::istringstream words(line);
  ByteString tracks;
  while (words >> std::ws && !words.eof()) tracks = Join({tracks, TrackOf(words)});
  return MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, tracks), Cluster(0, SimpleBlock(1, 0, {0}))}));
}

/// Each pair of lines of a table, which has so many at least.
void ForEachRow(const char* table, int least,
                const std::function<void(const std::string&, const std::string&)>& check) {
  std::ifstream lines(SystemPath(SourceDir() + "/tests/data/" + table));
  int rows = 0;
  for (std::string first, second; std::getline(lines, first);) {
    if (first.starts_with('#')) continue;
    ASSERT_TRUE(std::getline(lines, second)) << first;
    SCOPED_TRACE(first);
    check(first, second);
    ++rows;
  }
  EXPECT_GE(rows, least);
}

// Not the module's, whose user cannot be told a language.
ComPtr<IBaseFilter> LinkedSplitter() {
  HRESULT result = S_OK;
  return ComPtr<IUnknown>(CMatroskaSplitter::CreateInstance(nullptr, &result)->Inner()).Query<IBaseFilter>();
}

/// A graph with a file of the corpus or of such tracks, for a user of this language.
class Opened : public TestGraph {
 public:
  Opened(const std::string& userLanguage, const std::string& file) : TestGraph(LinkedSplitter()) {
    OverrideUserLanguageForTests(userLanguage.c_str());
    const std::string folder = SystemPath(SourceDir() + "/tests/data/corpus/gen/");
    EXPECT_EQ(file.ends_with(".mkv") ? Open(folder + file) : Open(SourceFilter::FromBytes(FileOf(file)).Get()), S_OK);
    OverrideUserLanguageForTests(nullptr);
    select = QueryFor<IAMStreamSelect>(Splitter());
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

  ComPtr<IAMStreamSelect> select;
};

TEST(StreamList, IsAsTheTableSays) {
  ForEachRow("streams.txt", 16, [](const std::string& file, const std::string& streams) {
    const std::size_t colon = file.find(": ");
    EXPECT_EQ(Opened(file.substr(0, colon), file.substr(colon + 2)).Streams(), streams);
  });
}

TEST(MediaTypeTable, EveryRowIsOfferedOrRefused) {
  ForEachRow("media_types.txt", 71, [](const std::string& track, const std::string& type) {
    constexpr std::string_view kRefused = "  refused: ";
    TestGraph graph;
    LogCapture log(graph.Splitter());
    if (SUCCEEDED(graph.Open(SourceFilter::FromBytes(FileOf(track)).Get()))) {
      EXPECT_EQ("  " + OfferedType(graph.OutputPins().at(0).Get()), type);
    } else {
      EXPECT_TRUE(type.starts_with(kRefused) && log.Contains(type.substr(kRefused.size()))) << log.Joined();
    }
  });
}

TEST(StreamList, EnableMovesAnUnconnectedPinToTheStream) {
  const Opened opened("German", "multi.mkv");
  for (const LONG index : {5, 5, 8, 7}) {  // subtitles, of which 8 is none
    EXPECT_EQ(opened.select->Enable(index, AMSTREAMSELECTENABLE_ENABLE), S_OK);
    const std::string streams = opened.Streams();
    EXPECT_EQ(std::ranges::count(streams, '+'), 3) << streams;
    EXPECT_EQ(std::ranges::count(streams.substr(0, streams.rfind("| +")), '|'), index) << streams;
  }
  const std::string before = opened.Streams();
  for (const LONG index : {-1, 9}) EXPECT_EQ(opened.select->Enable(index, AMSTREAMSELECTENABLE_ENABLE), E_INVALIDARG);
  EXPECT_EQ(opened.Streams(), before);
}

}  // namespace
}  // namespace tarvex::test
