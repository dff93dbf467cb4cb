// A track of each codec and the media type that its pin offers, from tests/data/media_types.txt.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

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

/// A file with the one track that a line of the table describes.
ByteString FileWith(const std::string& line) {
  static const std::map<std::string, std::uint32_t> kDetails = {
      {"width", id::kPixelWidth}, {"height", id::kPixelHeight}, {"display_width", 0x54B0},
      {"display_height", 0x54BA}, {"channels", id::kChannels},  {"bits", id::kBitDepth}};
  std::istringstream words(line);
  std::uint64_t type = 0;
  std::string codec;
  words >> type >> codec;
  ByteString track;
  ByteString details;
  for (std::string word; words >> word;) {
    const std::string name = word.substr(0, word.find('='));
    const std::string value = word.substr(name.size() + 1);
    if (kDetails.contains(name)) details = Join({details, Unsigned(kDetails.at(name), std::stoull(value))});
    if (name == "rate") details = Join({details, Float(id::kSamplingFrequency, std::stod(value))});
    if (name == "duration") track = Join({track, Unsigned(id::kDefaultDuration, std::stoull(value))});
    if (name == "language") track = Join({track, Text(id::kLanguage, value)});
    if (name == "private") track = Join({track, Element(id::kCodecPrivate, FromHex(value))});
  }
  track = Join({track, Element(type == 1 ? id::kVideo : id::kAudio, details)});
  return MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, TrackEntry(1, type, codec, track)),
                            Cluster(0, SimpleBlock(1, 0, {0}))}));
}

TEST(MediaTypeTable, EveryRowIsOfferedOrRefused) {
  std::ifstream table(SystemPath(SourceDir() + "/tests/data/media_types.txt"));
  constexpr std::string_view kRefused = "  refused: ";
  int rows = 0;
  for (std::string track, type; std::getline(table, track);) {
    if (track.starts_with('#')) continue;
    ASSERT_TRUE(std::getline(table, type)) << track;
    TestGraph graph;
    LogCapture log(graph.Splitter());
    const bool isOpen = SUCCEEDED(graph.Open(SourceFilter::FromBytes(FileWith(track)).Get()));
    if (isOpen) {
      EXPECT_EQ("  " + OfferedType(graph.OutputPins().at(0).Get()), type) << track;
    } else {
      EXPECT_TRUE(type.starts_with(kRefused) && log.Contains(type.substr(kRefused.size()))) << track << log.Joined();
    }
    ++rows;
  }
  EXPECT_GT(rows, 70);
}

}  // namespace
}  // namespace tarvex::test
