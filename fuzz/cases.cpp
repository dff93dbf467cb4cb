// See cases.h.
#include "fuzz/cases.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>

#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::fuzz {
namespace {

namespace fs = std::filesystem;

std::vector<CorpusFile> FilesBelow(const fs::path& folder) {
  std::vector<CorpusFile> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string kind = entry.path().extension().string();
    if (!kind.starts_with(".mk") && kind != ".webm") continue;
    files.push_back({fs::relative(entry.path(), folder).generic_string(), SystemPath(entry.path().string())});
  }
  std::ranges::sort(files, {}, &CorpusFile::name);
  return files;
}

}  // namespace

std::string CorpusFile::Letters() const {
  std::string letters = name;
  std::ranges::replace_if(
      letters, [](unsigned char letter) { return std::isalnum(letter) == 0; }, '_');
  return letters;
}

const std::vector<CorpusFile>& CorpusFiles() {
  static const char* const other = std::getenv("TARVEX_CORPUS");  // NOLINT(concurrency-mt-unsafe): nobody sets it
  static const auto files = FilesBelow(other != nullptr ? other : SourceDir() + "/tests/data/corpus");
  return files;
}

unsigned FromEnvironment(const char* name, unsigned otherwise) {
  const char* given = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets it
  return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : otherwise;
}

unsigned Many(unsigned few, unsigned all) { return FromEnvironment("TARVEX_LONG", 0) != 0 ? all : few; }

}  // namespace tarvex::fuzz
