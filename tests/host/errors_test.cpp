// What mkvhost answers when it cannot do what it is asked: exactly one line, and a code for each kind.
#include <gtest/gtest.h>

#include <algorithm>

#include "host/exit_code.h"
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

TEST(HostErrors, MissingFile) {
  ExpectRefusal(RunHostWithModule({L"info", L"C:\\no such folder\\x.mkv"}), ExitCode::kNoSuchFile,
                "C:\\no such folder\\x.mkv: no such file");
  ExpectRefusal(RunHostWithModule({L"play", SourcePath("tests")}), ExitCode::kNoSuchFile, "is a folder");
}

TEST(HostErrors, EscapeSequenceInAFileNameIsNotObeyed) {
  ExpectRefusal(RunHostWithModule({L"info", L"\x1B[31m.mkv"}), ExitCode::kNoSuchFile, "\\x1B[31m.mkv: no such file");
}

TEST(HostErrors, FileThatIsNotMatroska) {
  for (const wchar_t* command : {L"info", L"dump", L"play"}) {
    ExpectRefusal(RunHostWithModule({command, SourcePath("LICENSE")}), ExitCode::kNotMatroska, "not a Matroska file");
  }
  const TemporaryFolder folder;
  WriteAll(folder.PathOf(L"empty.mkv"), "");
  ExpectRefusal(RunHostWithModule({L"info", folder.PathOf(L"empty.mkv")}), ExitCode::kNotMatroska, "empty.mkv");
}

TEST(HostErrors, RefusedFileNamesTheModulesReason) {
  const WideString file = SourcePath("tests/data/corpus/gen/codec_unknown_video.mkv");
  for (const wchar_t* command : {L"info", L"dump", L"play"}) {
    ExpectRefusal(RunHostWithModule({command, file}), ExitCode::kRefused,
                  "codec_unknown_video.mkv: refused: <COutPinsCreator::createVideoPin> unknown codec id");
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
