// See manifest.h.
#include "tests/corpus/manifest.h"

#include <cstdlib>
#include <fstream>
#include <limits>
#include <stdexcept>

#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

using nlohmann::json;

std::string CorpusFolder() {
  const char* folder = std::getenv("TARVEX_CORPUS");
  return folder != nullptr && *folder != '\0' ? folder : SourceDir() + "/tests/data/corpus";
}

json ReadJson(const std::string& path) {
  std::ifstream stream(SystemPath(path));
  if (!stream) throw std::runtime_error("cannot read " + path);
  const auto isThere = [](int, json::parse_event_t, const json& value) { return !value.is_null(); };
  return json::parse(stream, isThere, true, true);
}

std::vector<CorpusFile> ReadCorpus(const std::string& folder) {
  json entries = ReadJson(folder + "/manifest.json").at("files");
  const json decisions = ReadJson(SourceDir() + "/tests/data/corpus/decisions.json");
  std::vector<CorpusFile> files;
  for (auto& [name, entry] : entries.items()) {
    entry.merge_patch(decisions.value(name, json::object()));
    files.push_back({name, SystemPath(folder + "/" + name), std::move(entry)});
  }
  return files;
}

}  // namespace

std::int64_t CorpusFile::Duration() const {
  const auto duration = entry.value("duration", std::int64_t{0});
  return duration > 0 ? duration : std::numeric_limits<std::int64_t>::max();
}

const std::vector<CorpusFile>& Corpus() {
  static const std::vector<CorpusFile> files = ReadCorpus(CorpusFolder());
  return files;
}

}  // namespace tarvex::test
