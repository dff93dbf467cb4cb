// See corpus_files.h.
#include "tests/damage/corpus_files.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>

#include "tests/support/source_dir.h"

namespace tarvex::test {
namespace {

namespace fs = std::filesystem;

const char* Environment(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets it
  return value != nullptr && *value != '\0' ? value : nullptr;
}

std::vector<CorpusPath> ListFiles(const fs::path& folder) {
  std::vector<CorpusPath> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string kind = entry.path().extension().string();
    const bool isMedia = kind.starts_with(".mk") || kind == ".webm";
    if (entry.is_regular_file() && isMedia) {
      files.push_back({fs::relative(entry.path(), folder).string(), entry.path().string()});
    }
  }
  std::sort(files.begin(), files.end(), [](const auto& one, const auto& other) { return one.name < other.name; });
  return files;
}

}  // namespace

const std::vector<CorpusPath>& CorpusPaths() {
  static const std::vector<CorpusPath> files = [] {
    const char* other = Environment("TARVEX_CORPUS");
    return ListFiles(other != nullptr ? other : SourceDir() + "/tests/data/corpus");
  }();
  return files;
}

std::string TestNameOf(const std::string& name) {
  std::string letters = name;
  for (char& letter : letters) {
    if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '_';
  }
  return letters;
}

bool IsLongRun() { return Environment("TARVEX_LONG") != nullptr; }

std::uint32_t FirstSeed() {
  const char* given = Environment("TARVEX_SEED");
  return given != nullptr ? static_cast<std::uint32_t>(std::strtoul(given, nullptr, 10)) : 1;
}

}  // namespace tarvex::test
