// Every file of the corpus through the whole filter, one case a file: what is offered, every frame, and every refusal,
// against the manifest.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>

#include "filter/interface_ids.h"
#include "framework/bstr.h"
#include "framework/text_conversion.h"
#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/module_config.h"
#include "tests/corpus/manifest.h"
#include "tests/corpus/stream.h"
#include "tests/corpus/type_text.h"
#include "tests/support/digest.h"
#include "tests/support/graph_test.h"
#include "tests/support/log_capture.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

using nlohmann::json;

enum TrackType { kPictures = 1, kSound = 2, kSubtitles = 17 };

/// The type of file#track; empty for a track that the list does not have.
std::string ListedType(const std::string& track) {
  static const std::map<std::string, std::string> types = [] {
    std::map<std::string, std::string> found;
    std::ifstream list(SystemPath(SourceDir() + "/tests/data/corpus/media_types.txt"));
    for (std::string type, tracks; std::getline(list, type);) {
      if (type.starts_with('#') || !std::getline(list, tracks)) continue;
      std::istringstream words(tracks);
      for (std::string each; words >> each;) found[each] = type;
    }
    return found;
  }();
  const auto found = types.find(track);
  return found == types.end() ? "" : found->second;
}

/// Names of chapters are given as the bytes of their UTF-8 form, read in code page 1252.
std::string ThroughCodePage(const std::string& utf8) {
  static constexpr OLECHAR kUpperControls[] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                               0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                               0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                               0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
  WideString wide;
  for (const char letter : utf8) {
    const auto byte = static_cast<std::uint8_t>(letter);
    wide += byte >= 0x80 && byte < 0xA0 ? kUpperControls[byte - 0x80] : OLECHAR{byte};
  }
  return Utf8FromWide(wide);
}

/// Those that get a pin when every stream has its own, in the order of the pins.
std::vector<json> TracksOf(const CorpusFile& file) {
  std::map<std::uint64_t, json> tracks;
  for (const json& track : file.entry.value("tracks", json::array())) tracks.emplace(track.at("number"), track);
  const auto isPlaceholder = [](const auto& each) { return each.second.value("name", "") == "No Subtitles"; };
  const auto placeholder = std::ranges::find_if(tracks, isPlaceholder);
  if (placeholder != tracks.end()) tracks.erase(placeholder);
  std::vector<json> sorted;
  for (const auto& [number, track] : tracks) sorted.push_back(track);
  return sorted;
}

json ExpectedOffer(const CorpusFile& file) {
  json offer;
  const std::string docType = file.entry.value("doc_type", "");
  offer["doc type"] = docType == "matroska" ? 0 : docType == "webm" ? 1 : E_FAIL;
  for (const json& chapter : file.Expect().value("chapters", json::array())) {
    const std::string name = ThroughCodePage(chapter.at("name"));
    const std::int64_t start = chapter.at("start");
    offer["chapters"].push_back({name, start, chapter.at("end")});
    offer["markers"].push_back({name, static_cast<double>(start / 10000000)});
  }
  for (int beyond = 0; beyond < 2; ++beyond) offer["markers"].push_back({"", -1.0});
  std::map<int, int> counts;
  for (const json& track : TracksOf(file)) {
    const int type = track.at("type");
    const std::string kind = type == kPictures ? "Video " : type == kSound ? "Audio " : "Subtitle ";
    offer["pins"].push_back({kind + std::to_string(counts[type]++) + " (lang:" + track.value("language", "eng") + ")",
                             file.Duration(), ListedType(file.name + '#' + track.at("number").dump())});
  }
  return offer;
}

/// What the filter says before anything plays.
json Offer(const TestGraph& graph, const json& expected) {
  json offer;
  const auto config = QueryFor<IModuleConfig>(graph.Splitter());
  VARIANT value{};
  const HRESULT result = config->GetValue(&paramDocType, &value);
  offer["doc type"] = result == S_OK ? static_cast<HRESULT>(value.ulVal) : result;
  value.vt = VT_UINT;
  EXPECT_EQ(config->GetValue(&paramChapterList, &value), S_OK);
  std::vector<ChapterEntry> chapters(value.ulVal);
  value.vt = VT_PTR;
  value.byref = chapters.data();
  EXPECT_TRUE(chapters.empty() || config->GetValue(&paramChapterList, &value) == S_OK);
  for (const ChapterEntry& chapter : chapters) {
    BStr name;
    *name.Put() = chapter.name;
    offer["chapters"].push_back({Utf8FromWide(name.View()), chapter.start, chapter.end});
  }
  const auto markers = QueryFor<IAMExtendedSeeking>(graph.Splitter());
  LONG count = -1;
  EXPECT_EQ(markers->get_MarkerCount(&count), S_OK);
  for (LONG k = 1; k <= count + 2; ++k) {
    const LONG number = k <= count + 1 ? k : 0;  // two that are none
    double time = -1;
    BStr name;
    EXPECT_EQ(markers->GetMarkerTime(number, &time), S_OK);
    EXPECT_EQ(markers->GetMarkerName(number, name.Put()), S_OK);
    offer["markers"].push_back({Utf8FromWide(name.View()), time});
  }
  for (const ComPtr<IPin>& pin : graph.OutputPins()) {
    LONGLONG duration = -1;
    EXPECT_EQ(QueryFor<IMediaSeeking>(pin.Get())->GetDuration(&duration), S_OK);
    const std::size_t index = offer["pins"].size();
    const bool isListed = index >= expected["pins"].size() || expected["pins"][index][2] != "";
    offer["pins"].push_back({NameOf(pin.Get()), duration, isListed ? OfferedType(pin.Get()) : ""});
  }
  return offer;
}

json ListedOf(const CorpusFile& file, const json& track) {
  const json none = {{"count", 0}, {"frames", json::array()}};
  return file.entry.value("frames", json::object()).value(track.at("number").dump(), none);
}

/// The other streams begin with the first picture that can be decoded.
std::int64_t FirstPicture(const CorpusFile& file) {
  for (const json& track : file.entry.at("tracks")) {
    if (track.at("type") != kPictures) continue;
    const Frames frames = ListedFrames(ListedOf(file, track));
    const auto first = std::ranges::find_if(frames, &Frame::key);
    if (first != frames.end()) return first->time;
  }
  return 0;
}

/// How many at the front are not delivered: sound and text before the start are not wanted, and pictures before the
/// first key frame cannot be decoded.
std::ptrdiff_t CountOfDropped(const CorpusFile& file, const json& track, const Frames& listed) {
  const std::int64_t first = FirstPicture(file);
  const bool hasPictures = track.at("type") == kPictures;
  const auto isWanted = [&](const Frame& frame) {
    if (hasPictures) return frame.key;
    return (frame.time >= 0 || frame.End() >= 0) && (first <= 0 || frame.time >= first);
  };
  return std::ranges::find_if(listed, isWanted) - listed.begin();
}

void CompareFrames(const CorpusFile& file, const json& track, const Frames& delivered) {
  const json listed = ListedOf(file, track);
  Frames all = ListedFrames(listed);
  std::size_t count = listed.at("count");
  if (file.IsDamaged()) {  // what comes after that may be lost
    count -= listed.value("after_damage", std::size_t{0});
    EXPECT_GE(delivered.size(), count);
    all.resize(std::min(all.size(), count));
  } else {
    const std::ptrdiff_t dropped = CountOfDropped(file, track, all);
    EXPECT_EQ(delivered.size(), count - static_cast<std::size_t>(dropped));
    std::string lines;
    std::for_each(all.begin(), all.begin() + dropped, [&](const Frame& frame) { lines += LineOf(frame); });
    for (const Frame& frame : delivered) lines += LineOf(frame);
    EXPECT_TRUE(listed.contains("frames") || Sha256Of(lines) == listed.at("sha256_lines"));
    all.erase(all.begin(), all.begin() + dropped);
  }
  for (std::size_t k = 0; k < std::min(all.size(), delivered.size()); ++k) {
    ASSERT_EQ(LineOf(delivered[k]), LineOf(all[k])) << "frame " << k;
  }
}

class CorpusTest : public GraphTest, public testing::WithParamInterface<CorpusFile> {
 protected:
  void Play() {
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kRecording), S_OK);
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    const bool mayAbort = GetParam().IsRobustness();
    EXPECT_TRUE(Eventually([&] { return Graph().WaitForEnd(1) || (mayAbort && IsAborted()); })) << "no end";
    EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  }
};

TEST_P(CorpusTest, IsReadAsTheManifestSays) {
  const CorpusFile& file = GetParam();
  ASSERT_EQ(Graph().SeparatePins(true), S_OK);
  LogCapture log(Splitter());
  const HRESULT result = Graph().Open(file.path);
  ASSERT_EQ(SUCCEEDED(result), file.Opens()) << result << ": " << log.Joined();
  if (!file.Opens()) {
    const std::string message = file.Expect().value("message", "");
    EXPECT_TRUE(message.empty() || log.Contains(message)) << message << ", not " << log.Joined();
    return;
  }
  const json expected = ExpectedOffer(file);
  EXPECT_EQ(json::diff(expected, Offer(Graph(), expected)), json::array());
  Play();
  const std::vector<json> tracks = TracksOf(file);
  ASSERT_EQ(Graph().Sinks().size(), tracks.size());
  for (std::size_t k = 0; k < tracks.size() && !file.IsRobustness(); ++k) {
    SCOPED_TRACE(NameOf(Graph().OutputPins()[k].Get()));
    const Stream stream = StreamOf(Graph().Sink(k));
    EXPECT_EQ(stream.order, OrderOf(stream.frames.size()));
    CompareFrames(file, tracks[k], stream.frames);
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusTest, testing::ValuesIn(Corpus()), kCaseName);

}  // namespace
}  // namespace tarvex::test
