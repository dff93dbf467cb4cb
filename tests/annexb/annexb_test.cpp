// The start-code form of every H.264 stream of the corpus decodes to the same pictures as the file itself.
// ffmpeg decodes both.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

#include "filter/interface_ids.h"
#include "include/tarvex/module_config.h"
#include "tests/corpus/manifest.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

// Where ffmpeg is no judge: it decodes nothing of empty NAL units, ends at a block of an unknown track, goes
// on into a second segment; and of several sequence sets the first two entries hold no picture set.
constexpr const char* kNotComparable[] = {"gen/avc_empty_nals.mkv", "gen/stray_track.mkv", "gen/two_segments.mkv",
                                          "gen/avc_two_sps.mkv"};

// Damaged files are left out, since an error is concealed by what the container tells of the frames, and a
// file without frames has no pictures.
std::vector<CorpusFile> H264Files() {
  std::vector<CorpusFile> files = Corpus();
  std::erase_if(files, [](const CorpusFile& file) {
    if (!file.Opens() || file.IsRobustness() || file.IsDamaged()) return true;
    if (std::ranges::find(kNotComparable, file.name) != std::end(kNotComparable)) return true;
    for (const auto& track : file.entry.value("tracks", nlohmann::json::array())) {
      if (track.value("codec_id", "") != "V_MPEG4/ISO/AVC") continue;
      return file.entry.value(nlohmann::json::json_pointer("/frames/" + track.at("number").dump() + "/count"), 0) == 0;
    }
    return true;
  });
  return files;
}

// What the first video pin delivers, to the end of the file.
void WriteStartCodeStream(const std::string& file, const std::string& output) {
  TestGraph graph;
  VARIANT on{};
  on.vt = VT_BOOL;
  on.boolVal = VARIANT_TRUE;
  ASSERT_EQ(QueryFor<IModuleConfig>(graph.Splitter())->SetValue(&paramAnnexBOutput, &on), S_OK);
  ASSERT_EQ(graph.Open(file), S_OK);
  ASSERT_EQ(graph.ConnectSinks(SinkKind::kCounting), S_OK);
  std::ofstream stream(output, std::ios::binary);
  graph.Sink(0).OnSample([&](IMediaSample* sample) {
    BYTE* bytes = nullptr;
    sample->GetPointer(&bytes);
    stream.write(reinterpret_cast<const char*>(bytes), sample->GetActualDataLength());
  });
  ASSERT_EQ(graph.Run(), S_OK);
  EXPECT_TRUE(graph.WaitForEnd());
  graph.Stop();
  EXPECT_TRUE(stream.good());
}

// The checksum of every decoded picture, without its time.
std::string Pictures(const std::string& input) {
  const std::string command =
      "ffmpeg -nostdin -v quiet " + input + " -an -sn -fps_mode passthrough -f framemd5 - </dev/null";
  const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
  std::string sums;
  char line[512];
  while (output && std::fgets(line, sizeof line, output.get()) != nullptr) {
    const std::string text = line;
    if (text.front() != '#') sums += text.substr(text.rfind(',') + 1);
  }
  return sums;
}

class AnnexBPictures : public testing::TestWithParam<CorpusFile> {};

TEST_P(AnnexBPictures, AreThoseOfTheFile) {
  const CorpusFile& file = GetParam();
  const std::string made = testing::TempDir() + "tarvex-" + std::to_string(getpid()) + ".h264";
  WriteStartCodeStream(file.path, made);
  const std::string original = Pictures("-i '" + file.path + "' -map 0:v:0");
  EXPECT_FALSE(original.empty()) << "ffmpeg decodes nothing of the file";
  EXPECT_EQ(Pictures("-f h264 -i '" + made + "'"), original);
  std::filesystem::remove(made);
}

INSTANTIATE_TEST_SUITE_P(Corpus, AnnexBPictures, testing::ValuesIn(H264Files()), kCaseName);

}  // namespace
}  // namespace tarvex::test
