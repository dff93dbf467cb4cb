// What no transcript can hold: names that are no plain text, files that mkvhost writes, and what depends on time.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "host/report/checksum.h"
#include "host/system/exit_code.h"
#include "tests/host/host_process.h"
#include "tests/support/source_dir.h"

namespace tarvex::host::test {
namespace {

TEST(HostCommand, NothingInAFileNameIsObeyed) {
  const std::pair<WideString, std::string> names[] = {
      {L"\x1B[31m.mkv", "\\x1B[31m.mkv"},
      {WideString(L"a\x009B") + L"31m.mkv", "a\\u{009B}31m.mkv"},
      {L"a\x202Egpj.mkv", "a\\u{202E}gpj.mkv"},
      {L"line\nline\r.mkv", "line\\nline\\r.mkv"},
      {L"\x7F\x2028\x061C\x2069\xFEFF.mkv", "\\x7F\\u{2028}\\u{061C}\\u{2069}\\u{FEFF}.mkv"},
      {L"a\xD800.mkv", "a\\xED\\xA0\\x80.mkv"},
      {L"%s%n{}.mkv", "%s%n{}.mkv"},
      {WideString(3000, L'x'), std::string(3000, 'x')},
  };
  for (const auto& [name, shown] : names) {
    const HostResult result = RunHost(L"info " + name);
    EXPECT_EQ(result.code, static_cast<DWORD>(ExitCode::kNoSuchFile));
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "mkvhost: " + shown + ": no such file\n");
  }
}

// A name outside every code page that looks like an option; folders of that name for what is written.
TEST(HostCommand, DumpWritesTheBytesOfTheChecksumsAndALog) {
  const TemporaryFolder folder;
  const WideString film = folder.PathOf(L"-日本語 ünï 🎬.mkv");
  std::filesystem::copy_file(tarvex::test::SourceDir() + "/tests/data/sample.mkv", film);
  const WideString made = folder.PathOf(L"日本語 🎬");
  const HostResult result =
      RunHost(L"dump --json --bytes \"" + made + L"\" --log \"" + made + L".log\" -- \"" + film + L"\"");
  ASSERT_EQ(result.code, 0u) << result.errors;
  std::map<int, std::string> bytes;
  std::istringstream lines(result.output);
  for (std::string line; std::getline(lines, line);) {
    const nlohmann::json event = nlohmann::json::parse(line);
    if (event["event"] != "sample") continue;
    const int pin = event["pin"];
    if (!bytes.contains(pin)) bytes[pin] = ReadAll(made + L"\\pin" + std::to_wstring(pin) + L".bin");
    const auto size = event["size"].get<std::size_t>();
    ASSERT_LE(size, bytes[pin].size());
    EXPECT_EQ(event["sha1"], Sha1Text({reinterpret_cast<const std::uint8_t*>(bytes[pin].data()), size}));
    bytes[pin].erase(0, size);
  }
  EXPECT_EQ(bytes, (std::map<int, std::string>{{0, ""}, {1, ""}, {2, ""}}));
  const std::string log = ReadAll(made + L".log");
  EXPECT_TRUE(std::regex_match(log, std::regex("(\\d\\d:\\d\\d:\\d\\d\\.\\d{3} [0-9a-f]{4,} \\S[^\n]*\n)+"))) << log;
  EXPECT_NE(log.find(" CMatroskaSplitter::ThreadProc tm_start\n"), std::string::npos) << log;
}

int PicturesPlayed(const WideString& options) {
  const HostResult result = RunHost(L"play " + options + L" tests/data/sample.mkv");
  EXPECT_EQ(result.code, 0u) << result.errors;
  std::smatch found;
  const bool isThere = std::regex_search(result.output, found, std::regex("  video (\\d+)  "));
  return isThere ? std::stoi(found[1]) : -1;
}

// Of 50 pictures, one each tenth of a second, all of them key frames.
TEST(HostCommand, PlaysWhatIsAskedFor) {
  EXPECT_NEAR(PicturesPlayed(L"--no-clock --start 0:00:01 --stop 2.5"), 15, 2);
  EXPECT_NEAR(PicturesPlayed(L"--no-clock --chapter 2"), 30, 2);
  EXPECT_GE(PicturesPlayed(L"--no-clock --chapter 2 --seek 4.5 --seek 0 --seek 0:00:04 --seek 0"), 50);
  EXPECT_LT(PicturesPlayed(L"--duration-limit 0.001"), 50);
}

}  // namespace
}  // namespace tarvex::host::test
