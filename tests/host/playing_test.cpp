// The three commands over real files, from outside.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <regex>
#include <sstream>

#include "host/report/checksum.h"
#include "tests/host/host_process.h"

namespace tarvex::host::test {
namespace {

using nlohmann::json;

const char* const kSample = "tests/data/sample.mkv";
const char* const kGroups = "tests/data/corpus/gen/groups.mkv";

std::vector<json> Lines(const HostResult& result) {
  std::vector<json> lines;
  std::istringstream stream(result.output);
  for (std::string line; std::getline(stream, line);) lines.push_back(json::parse(line));
  return lines;
}

std::vector<json> SamplesOf(const std::vector<json>& lines, int pin) {
  std::vector<json> samples;
  for (const json& line : lines) {
    if (line["event"] == "sample" && line["pin"] == pin) samples.push_back(line);
  }
  return samples;
}

std::span<const std::uint8_t> Bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(HostInfo, SaysWhatTheFileHolds) {
  const HostResult result = RunHostWithModule({L"info", L"--json", SourcePath(kSample)});
  ASSERT_EQ(result.code, 0u) << result.errors;
  const json info = json::parse(result.output);
  EXPECT_EQ(info["doc_type"], "matroska");
  EXPECT_EQ(info["duration"], 50'000'000);
  ASSERT_EQ(info["pins"].size(), 3u);
  const json& video = info["pins"][0]["media_types"][0];
  EXPECT_EQ(video["details"]["compression"], "UYVY");
  EXPECT_EQ(video["block"].get<std::string>().size(), video["block_size"].get<std::size_t>() * 2);
  EXPECT_EQ(info["pins"][1]["media_types"][0]["subtype"]["name"], "0x0055 MP3");
  EXPECT_EQ(info["streams"].back()["name"], "No Subtitles");
  EXPECT_EQ(info["chapters"][1]["name"], "Second half");
  EXPECT_EQ(info["chapters"][1]["start"], 25'000'000);
  EXPECT_EQ(info["markers"].size(), 2u);
}

TEST(HostInfo, SettingsAreMadeBeforeTheFileIsOpened) {
  const WideString file = SourcePath("tests/data/corpus/gen/flags_names.mkv");
  const json plain = json::parse(RunHostWithModule({L"info", L"--json", file}).output);
  const json other = json::parse(RunHostWithModule({L"info", L"--json", L"--separate-pins", L"--annexb", file}).output);
  EXPECT_LT(plain["pins"].size(), other["pins"].size());
  EXPECT_EQ(other["pins"].size(), other["streams"].size());
  EXPECT_EQ(plain["pins"][0]["media_types"][0]["subtype"]["name"], "AVC1");
  EXPECT_EQ(other["pins"][0]["media_types"][0]["subtype"]["name"], "H264 byte stream");
}

TEST(HostDump, EverySampleIsThatOfTheManifest) {
  const json manifest = json::parse(ReadAll(SourcePath("tests/data/corpus/manifest.json")));
  const json& frames = manifest["files"]["gen/groups.mkv"]["frames"]["1"]["frames"];
  const HostResult result = RunHostWithModule({L"dump", L"--json", SourcePath(kGroups)});
  ASSERT_EQ(result.code, 0u) << result.errors;
  const auto lines = Lines(result);
  const auto samples = SamplesOf(lines, 0);
  ASSERT_EQ(samples.size(), frames.size());
  EXPECT_EQ(lines[0]["event"], "pin");
  ASSERT_EQ(lines[1]["event"], "segment");
  const auto begin = lines[1]["start"].get<std::int64_t>();
  for (std::size_t i = 0; i < samples.size(); ++i) {
    EXPECT_EQ(begin + samples[i]["start"].get<std::int64_t>(), frames[i][0]) << i;
    EXPECT_EQ(samples[i]["sync"], frames[i][2] == 1) << i;
    EXPECT_EQ(samples[i]["size"], frames[i][3]) << i;
    EXPECT_EQ(samples[i]["sha1"], frames[i][4]) << i;
  }
  EXPECT_EQ(lines.back()["event"], "end");
}

TEST(HostDump, BytesAreThoseOfTheChecksums) {
  const TemporaryFolder folder;
  const HostResult result =
      RunHostWithModule({L"dump", L"--json", L"--bytes", folder.PathOf(L"made"), SourcePath(kSample)});
  ASSERT_EQ(result.code, 0u) << result.errors;
  const auto lines = Lines(result);
  for (int pin = 0; pin < 3; ++pin) {
    const std::string bytes = ReadAll(folder.PathOf(L"made\\pin" + std::to_wstring(pin) + L".bin"));
    std::size_t at = 0;
    for (const json& sample : SamplesOf(lines, pin)) {
      const auto size = sample["size"].get<std::size_t>();
      EXPECT_EQ(sample["sha1"], Sha1Text(Bytes(bytes).subspan(at, size)));
      at += size;
    }
    EXPECT_EQ(at, bytes.size());
  }
}

// Whatever the platform can render of it, every sample passes.
TEST(HostPlay, CountsWhatTheFileHolds) {
  const HostResult result = RunHostWithModule({L"play", L"--no-clock", SourcePath(kSample)});
  ASSERT_EQ(result.code, 0u) << result.errors;
  EXPECT_NE(result.output.find(" / 0:00:05.000  100 %  video 50  audio 189  subtitle 2  "), std::string::npos)
      << result.output;
  EXPECT_NE(result.output.find("\n  Subtitle 0 (lang:eng)  "), std::string::npos) << result.output;
  EXPECT_EQ(result.output.find('\r'), std::string::npos) << "progress is rewritten on terminals only";
}

TEST(HostPlay, StreamsThatNothingRendersAreCounted) {
  const HostResult result = RunHostWithModule({L"play", SourcePath(kGroups)});
  ASSERT_EQ(result.code, 0u) << result.errors;
  EXPECT_NE(
      result.output.find("\n  Video 0 (lang:eng): counted, no decoder or renderer takes it, VFW_E_CANNOT_RENDER ("),
      std::string::npos)
      << result.output;
  EXPECT_NE(result.output.find("  video 9  "), std::string::npos) << result.output;
}

TEST(HostPlay, DurationLimitEndsIt) {
  const HostResult result = RunHostWithModule({L"play", L"--duration-limit", L"0.001", SourcePath(kSample)});
  EXPECT_EQ(result.code, 0u) << result.errors;
  EXPECT_EQ(result.output.find("video 50"), std::string::npos) << result.output;
}

int SamplesPlayed(const HostResult& result, const std::string& kind) {
  std::smatch found;
  const bool isThere = std::regex_search(result.output, found, std::regex("  " + kind + " (\\d+)  "));
  return isThere ? std::stoi(found[1]) : -1;
}

TEST(HostPlay, ChosenStreamsAreThoseThatPlay) {
  const HostResult result =
      RunHostWithModule({L"play", L"--no-clock", L"--audio", L"deu", L"--subtitle", L"off", SourcePath(kSample)});
  ASSERT_EQ(result.code, 0u) << result.errors;
  EXPECT_NE(result.output.find("  A: High tone [German]  "), std::string::npos) << result.output;
  EXPECT_NE(result.output.find("  No Subtitles  "), std::string::npos) << result.output;
  EXPECT_EQ(SamplesPlayed(result, "audio"), 189) << result.output;
  EXPECT_EQ(SamplesPlayed(result, "subtitle"), 0) << result.output;
}

// Of 50 pictures, one each tenth of a second, all of them key frames.
TEST(HostPlay, StartAndStopBoundWhatPlays) {
  const HostResult result =
      RunHostWithModule({L"play", L"--no-clock", L"--start", L"0:00:01", L"--stop", L"2.5", SourcePath(kSample)});
  ASSERT_EQ(result.code, 0u) << result.errors;
  EXPECT_NEAR(SamplesPlayed(result, "video"), 15, 2) << result.output;
}

TEST(HostPlay, SeeksAreAllMadeBeforeTheEnd) {
  const HostResult result = RunHostWithModule({L"play", L"--no-clock", L"--chapter", L"2", L"--seek", L"4.5", L"--seek",
                                               L"0", L"--seek", L"0:00:04", L"--seek", L"0", SourcePath(kSample)});
  ASSERT_EQ(result.code, 0u) << result.errors;
  EXPECT_GE(SamplesPlayed(result, "video"), 50) << result.output;
  EXPECT_NE(result.output.find("0:00:05.000 / 0:00:05.000  100 %"), std::string::npos) << result.output;
}

TEST(HostFiles, NameOutsideEveryCodePageAndLikeAnOption) {
  const TemporaryFolder folder;
  const WideString path = folder.PathOf(L"-日本語 ünï 🎬.mkv");
  WriteAll(path, ReadAll(SourcePath(kGroups)));
  const HostResult result = RunHostWithModule({L"info", L"--json", L"--", path});
  ASSERT_EQ(result.code, 0u) << result.errors;
  EXPECT_TRUE(json::parse(result.output)["file"].get<std::string>().ends_with("日本語 ünï 🎬.mkv"));
}

TEST(HostLog, EveryLineHasTimeAndThread) {
  const TemporaryFolder folder;
  const WideString log = folder.PathOf(L"log.txt");
  ASSERT_EQ(RunHostWithModule({L"dump", L"--log", log, SourcePath(kGroups)}).code, 0u);
  std::istringstream lines(ReadAll(log));
  bool started = false;
  for (std::string line; std::getline(lines, line);) {
    EXPECT_TRUE(std::regex_search(line, std::regex("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3} [0-9a-f]{4,} \\S"))) << line;
    started = started || line.ends_with(" CMatroskaSplitter::ThreadProc tm_start");
  }
  EXPECT_TRUE(started);
}

}  // namespace
}  // namespace tarvex::host::test
