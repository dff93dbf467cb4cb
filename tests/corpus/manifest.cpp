// See manifest.h.
#include "tests/corpus/manifest.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tests/corpus/manifest_json.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

using nlohmann::json;

template <class T>
std::optional<T> Optional(const json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || found->is_null()) return std::nullopt;
  return found->get<T>();
}

template <class T>
T ValueOr(const json& object, const char* key, T otherwise) {
  return Optional<T>(object, key).value_or(otherwise);
}

/// The member, or an empty list or object in its place.
json Part(const json& object, const char* key, const json& otherwise) {
  const auto found = object.find(key);
  return found == object.end() ? otherwise : *found;
}

ManifestTrack ReadTrack(const json& object) {
  return {.number = Optional<std::uint32_t>(object, "number"),
          .type = Optional<std::uint32_t>(object, "type"),
          .codecId = ValueOr<std::string>(object, "codec_id", ""),
          .language = ValueOr<std::string>(object, "language", "eng"),
          .name = ValueOr<std::string>(object, "name", "")};
}

std::vector<ManifestFrame> ReadRows(const json& object, const char* key) {
  std::vector<ManifestFrame> rows;
  const auto found = object.find(key);
  if (found == object.end()) return rows;
  for (const json& row : *found) {
    rows.push_back({row[0].get<std::int64_t>(), row[1].get<std::int64_t>(), row[2].get<int>() != 0,
                    row[3].get<std::uint32_t>(), row[4].get<std::string>()});
  }
  return rows;
}

ManifestFrames ReadFrames(const json& object) {
  ManifestFrames frames;
  frames.count = object.at("count").get<std::size_t>();
  frames.afterDamage = ValueOr<std::size_t>(object, "after_damage", 0);
  frames.rows = ReadRows(object, "frames");
  frames.first = ReadRows(object, "first");
  frames.linesSha256 = ValueOr<std::string>(object, "sha256_lines", "");
  return frames;
}

void ReadExpectation(const json& expect, ManifestFile& file) {
  file.opens = expect.at("open") == "open";
  file.message = ValueOr<std::string>(expect, "message", "");
  file.upToDamage = ValueOr<std::string>(expect, "frames", "") == "up to the damage";
  const json chapters = Part(expect, "chapters", json::array());
  for (const json& chapter : chapters) {
    file.chapters.push_back({chapter.at("name").get<std::string>(), chapter.at("start").get<std::int64_t>(),
                             chapter.at("end").get<std::int64_t>()});
  }
}

ManifestFile ReadFile(const std::string& folder, const std::string& name, const json& object) {
  ManifestFile file;
  file.name = name;
  file.path = SystemPath(folder + "/" + name);
  file.docType = ValueOr<std::string>(object, "doc_type", "");
  file.robustness = ValueOr(object, "robustness", false);
  file.duration = ValueOr<std::int64_t>(object, "duration", 0);
  ReadExpectation(object.at("expect"), file);
  const json tracks = Part(object, "tracks", json::array());
  for (const json& track : tracks) file.tracks.push_back(ReadTrack(track));
  const json seeks = Part(object, "seeks", json::array());
  for (const json& seek : seeks) file.seeks.push_back({seek[0], seek[1], seek[2].get<std::vector<std::size_t>>()});
  const json frames = Part(object, "frames", json::object());
  for (const auto& [number, rows] : frames.items()) {
    file.frames[static_cast<std::uint32_t>(std::stoul(number))] = ReadFrames(rows);
  }
  return file;
}

}  // namespace

std::string LineOf(const ManifestFrame& frame) {
  return std::to_string(frame.time) + ' ' + std::to_string(frame.duration) + ' ' + (frame.key ? '1' : '0') + ' ' +
         std::to_string(frame.size) + ' ' + frame.sha1 + '\n';
}

std::string CorpusFolder() {
  const char* folder = std::getenv("TARVEX_CORPUS");
  return folder != nullptr && *folder != '\0' ? folder : SourceDir() + "/tests/data/corpus";
}

std::string CaseName(const ManifestFile& file) {
  std::string name = file.name;
  for (char& letter : name) {
    if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '_';
  }
  return name;
}

nlohmann::json ReadManifestFiles(const std::string& folder) {
  std::ifstream stream(SystemPath(folder + "/manifest.json"));
  if (!stream) throw std::runtime_error("cannot read " + folder + "/manifest.json");
  json files = json::parse(stream).at("files");
  std::ifstream ours(SystemPath(SourceDir() + "/tests/data/corpus/decisions.json"));
  const json decisions = json::parse(ours, nullptr, true, true);
  for (const auto& [name, changes] : decisions.items()) {
    if (files.contains(name)) files[name].merge_patch(changes);
  }
  return files;
}

std::vector<ManifestFile> ReadManifest(const std::string& folder) {
  const json manifest = ReadManifestFiles(folder);
  std::vector<ManifestFile> files;
  for (const auto& [name, object] : manifest.items()) files.push_back(ReadFile(folder, name, object));
  return files;
}

}  // namespace tarvex::test
