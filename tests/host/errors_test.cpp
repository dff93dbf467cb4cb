// What mkvhost answers when it cannot do what it is asked: exactly one line, and a code for each kind.
#include <gtest/gtest.h>

#include <algorithm>

#include "host/system/exit_code.h"
#include "tests/host/host_process.h"

namespace tarvex::host::test {
namespace {

void ExpectRefusal(const HostResult& result, ExitCode code, const std::string& text) {
  EXPECT_EQ(result.code, static_cast<DWORD>(code));
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  EXPECT_TRUE(result.errors.starts_with("mkvhost: ")) << result.errors;
  EXPECT_NE(result.errors.find(text), std::string::npos) << result.errors;
}

TEST(HostErrors, WrongArguments) {
  ExpectRefusal(RunHost({}), ExitCode::kUsage, "no command");
  ExpectRefusal(RunHost({L"frobnicate"}), ExitCode::kUsage, "frobnicate is no command");
  ExpectRefusal(RunHost({L"info"}), ExitCode::kUsage, "FILE");
  ExpectRefusal(RunHost({L"info", L"a", L"b"}), ExitCode::kUsage, "b");
  ExpectRefusal(RunHost({L"dump", L"a", L"--jason"}), ExitCode::kUsage, "--jason");
  ExpectRefusal(RunHost({L"play", L"a", L"--duration-limit", L"soon"}), ExitCode::kUsage, "soon");
}

TEST(HostErrors, PlayOptionsThatMakeNoSense) {
  const WideString file = SourcePath("tests/data/sample.mkv");
  const struct {
    std::vector<WideString> options;
    const char* text;
  } cases[] = {
      {{L"--start", L"1:30"}, "--start: 1:30 is no time"},
      {{L"--seek", L"1", L"--seek", L"x"}, "--seek: x is no time"},
      {{L"--start", L"3", L"--stop", L"0:00:03"}, "--stop: 0:00:03.000 is not after the start"},
      {{L"--chapter", L"2", L"--stop", L"2"}, "--stop: 0:00:02.000 is not after the start"},
      {{L"--chapter", L"99"}, "no chapter 99 (the file has 2)"},
      {{L"--chapter", L"one"}, "--chapter: one is no number"},
      {{L"--chapter", L"1", L"--start", L"1"}, "--chapter"},
      {{L"--audio", L"9"}, "no audio stream 9"},
      {{L"--audio", L"off"}, "no audio stream off"},
      {{L"--subtitle", L"German"}, "no subtitle stream German"},
      {{L"--audio", L"1", L"--separate-pins"}, "--separate-pins"},
      {{L"--duration-limit", L"0"}, "--duration-limit"},
  };
  for (const auto& each : cases) {
    std::vector<WideString> arguments = {L"play", file};
    arguments.insert(arguments.end(), each.options.begin(), each.options.end());
    ExpectRefusal(RunHostWithModule(arguments), ExitCode::kUsage, each.text);
  }
}

TEST(HostErrors, MissingFile) {
  ExpectRefusal(RunHostWithModule({L"info", L"C:\\no such folder\\x.mkv"}), ExitCode::kNoSuchFile,
                "C:\\no such folder\\x.mkv: no such file");
  ExpectRefusal(RunHostWithModule({L"play", SourcePath("tests")}), ExitCode::kNoSuchFile, "is a folder");
}

TEST(HostErrors, NothingInAFileNameIsObeyed) {
  const struct {
    WideString name;
    const char* shown;
  } cases[] = {
      {L"\x1B[31m.mkv", "\\x1B[31m.mkv"},
      {L"a\x009B"
       L"31m.mkv",
       "a\\u{009B}31m.mkv"},
      {L"a\x202Egpj.mkv", "a\\u{202E}gpj.mkv"},
      {L"line\nline\r.mkv", "line\\nline\\r.mkv"},
      {L"a\xD800.mkv", "a\\xED\\xA0\\x80.mkv"},
      {L"%s%n{}.mkv", "%s%n{}.mkv"},
      {WideString(3000, L'x'), "xxxx"},
  };
  for (const auto& each : cases) {
    for (const wchar_t* command : {L"info", L"dump", L"play"}) {
      ExpectRefusal(RunHostWithModule({command, each.name}), ExitCode::kNoSuchFile, std::string(each.shown));
    }
  }
}

TEST(HostErrors, FileThatIsNotMatroska) {
  for (const wchar_t* command : {L"info", L"dump", L"play"}) {
    ExpectRefusal(RunHostWithModule({command, SourcePath("LICENSE")}), ExitCode::kNotMatroska, "not a Matroska file");
  }
  const TemporaryFolder folder;
  WriteAll(folder.PathOf(L"empty.mkv"), "");
  ExpectRefusal(RunHostWithModule({L"info", folder.PathOf(L"empty.mkv")}), ExitCode::kNotMatroska, "empty.mkv");
}

TEST(HostErrors, RefusedFileNamesTheTrackAndTheModulesReason) {
  const WideString file = SourcePath("tests/data/corpus/gen/codec_unknown_video.mkv");
  for (const wchar_t* command : {L"info", L"dump", L"play"}) {
    ExpectRefusal(
        RunHostWithModule({command, file}), ExitCode::kRefused,
        "codec_unknown_video.mkv: refused: track 1 (V_NEW1): <COutPinsCreator::createVideoPin> unknown codec id");
  }
}

TEST(HostErrors, ModuleThatIsNone) {
  const WideString file = SourcePath("tests/data/sample.mkv");
  ExpectRefusal(RunHost({L"info", file, L"--module", L"C:\\nothing.dll"}), ExitCode::kModuleNotFound,
                "C:\\nothing.dll: module not found");
  ExpectRefusal(RunHost({L"info", file, L"--module", SourcePath("LICENSE")}), ExitCode::kModuleNotFound, "LICENSE");
  ExpectRefusal(RunHost({L"info", file, L"--module", L"C:\\windows\\system32\\ole32.dll"}), ExitCode::kModuleNotFound,
                "holds no Tarvex Matroska Splitter");
}

TEST(HostErrors, HelpIsNoError) {
  for (const wchar_t* option : {L"--help", L"--version"}) {
    const HostResult result = RunHost({option});
    EXPECT_EQ(result.code, 0u);
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find("mkvhost"), std::string::npos);
  }
}

}  // namespace
}  // namespace tarvex::host::test
