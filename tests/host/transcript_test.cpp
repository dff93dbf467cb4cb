// Whole answers of mkvhost to what users type, as they are kept in transcripts/: "$ mkvhost ARGUMENTS", what it
// prints to its output and then to its error stream, and an exit code other than 0. Each of those files says with
// what its content was compared when it was written down. A text that changes on purpose is compared once more; the
// failure shows it.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "tests/host/host_process.h"
#include "tests/support/source_dir.h"

namespace tarvex::host::test {
namespace {

constexpr std::string_view kPrompt = "$ mkvhost";

class HostTranscript : public testing::TestWithParam<const char*> {};

// How fast the machine is belongs to no transcript, nor which release this is.
std::string Masked(const std::string& text) {
  const std::string still = std::regex_replace(text, std::regex("( *[0-9.#]+ MB/s|(total .*[0-9]) +-)(?=\n)"), "$2");
  return std::regex_replace(still, std::regex("^mkvhost [0-9.]+\n$"), "mkvhost #\n");
}

std::string Answer(const std::string& prompt) {
  const HostResult result = RunHost(WideFromUtf8(prompt.substr(std::min(kPrompt.size() + 1, prompt.size()))));
  return result.output + result.errors + (result.code == 0 ? "" : "[exit code " + std::to_string(result.code) + "]\n");
}

TEST_P(HostTranscript, IsWhatItAnswers) {
  std::istringstream file(
      ReadAll(WideFromUtf8(tarvex::test::SourceDir() + "/tests/host/transcripts/" + GetParam() + ".txt")));
  std::string line;
  while (std::getline(file, line) && !line.starts_with(kPrompt)) {
  }
  int answers = 0;
  while (file) {
    const std::string prompt = line;
    std::string expected;
    while (std::getline(file, line) && !line.starts_with(kPrompt)) expected += line + '\n';
    EXPECT_EQ(Masked(Answer(prompt)), Masked(expected)) << prompt;
    ++answers;
  }
  EXPECT_GT(answers, 0);
}

INSTANTIATE_TEST_SUITE_P(Kept, HostTranscript,
                         testing::Values("help", "hostile", "refusals", "reports", "samples", "playing"),
                         [](const auto& one) { return std::string(one.param); });

}  // namespace
}  // namespace tarvex::host::test
