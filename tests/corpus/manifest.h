// The files of the corpus, with what the manifest and our decisions say that they hold and a reader must find in them.
// Read once, never changed; any thread.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

namespace tarvex::test {

struct CorpusFile {
  std::string name;  ///< below the corpus folder
  std::string path;
  nlohmann::json entry;  ///< as in the manifest, without what is null

  const nlohmann::json& Expect() const { return entry.at("expect"); }
  bool Opens() const { return Expect().at("open") == "open"; }
  /// How it must be read is left open.
  bool IsRobustness() const { return entry.value("robustness", false); }
  bool IsDamaged() const { return Expect().value("frames", "") == "up to the damage"; }
  /// In 100 ns units; the greatest there is when it is unknown.
  std::int64_t Duration() const;

  friend void PrintTo(const CorpusFile& file, std::ostream* out) { *out << file.name; }
};

/// All of the folder that TARVEX_CORPUS names, or of the repository's own choice.
const std::vector<CorpusFile>& Corpus();

/// The names of test cases over these files.
inline constexpr auto kCaseName = [](const auto& one) {
  std::string name = one.param.name;
  for (char& letter : name) {
    if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '_';
  }
  return name;
};

}  // namespace tarvex::test
