// See manifest.h.
#include "tests/corpus/manifest.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

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

Blob ReadBlob(const json& object, const char* size, const char* sha1) {
  return {object.at(size).get<std::uint64_t>(), object.at(sha1).get<std::string>()};
}

bool IsAbsent(const json& object, const char* field) {
  const auto absent = object.find("absent");
  return absent != object.end() && std::find(absent->begin(), absent->end(), field) != absent->end();
}

ManifestTrack ReadTrack(const json& object) {
  ManifestTrack track;
  track.number = Optional<std::uint32_t>(object, "number");
  track.type = Optional<std::uint32_t>(object, "type");
  if (!IsAbsent(object, "codec_id")) track.codecId = Optional<std::string>(object, "codec_id");
  track.language = ValueOr<std::string>(object, "language", "eng");
  track.name = ValueOr<std::string>(object, "name", "");
  if (object.contains("codec_private") && !object["codec_private"].is_null()) {
    track.codecPrivate = ReadBlob(object["codec_private"], "size", "sha1");
  }
  track.defaultDuration = Optional<std::uint64_t>(object, "default_duration_ns");
  track.pixelWidth = Optional<std::uint32_t>(object, "pixel_width");
  track.pixelHeight = Optional<std::uint32_t>(object, "pixel_height");
  track.displayWidth = ValueOr<std::uint32_t>(object, "display_width", 0);
  track.displayHeight = ValueOr<std::uint32_t>(object, "display_height", 0);
  track.samplingFrequency = ValueOr(object, "sampling_frequency", 8000.0);
  track.channels = ValueOr<std::uint32_t>(object, "channels", 1);
  track.bitDepth = ValueOr<std::uint32_t>(object, "bit_depth", 0);
  const auto avcc = object.find("avcc");
  if (avcc != object.end() && avcc->contains("sequence_header_size")) {
    track.sequenceHeader = ReadBlob(*avcc, "sequence_header_size", "sequence_header_sha1");
  }
  return track;
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
  const json index = Part(expect, "seek_index", json::object());
  for (const json& entry : Part(index, "entries", json::array())) {
    file.seekIndex.push_back({entry[0].get<std::uint64_t>(), entry[1].get<std::int64_t>()});
  }
  file.seekIndexIsWhole = ValueOr<std::size_t>(index, "count", 0) == file.seekIndex.size();
  const json chapters = Part(expect, "chapters", json::array());
  for (const json& chapter : chapters) {
    file.chapters.push_back({chapter.at("name").get<std::string>(), chapter.at("start").get<std::int64_t>(),
                             chapter.at("end").get<std::int64_t>()});
  }
}

// A Void is searched byte by byte, so that a Tracks element in the remains of an earlier edition counts,
// and the one behind it is not read.
void ApplyDecisions(ManifestFile& file) {
  if (file.name != "gen/void_stale.mkv") return;
  ManifestTrack stale;
  stale.number = 7;
  stale.type = 2;
  stale.codecId = "A_PCM/INT/LIT";
  stale.language = "eng";
  stale.bitDepth = 16;
  file.tracks = {stale};
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
  const json frames = Part(object, "frames", json::object());
  for (const auto& [number, rows] : frames.items()) {
    file.frames[static_cast<std::uint32_t>(std::stoul(number))] = ReadFrames(rows);
  }
  ApplyDecisions(file);
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

std::vector<ManifestFile> ReadManifest(const std::string& folder) {
  std::ifstream stream(SystemPath(folder + "/manifest.json"));
  if (!stream) throw std::runtime_error("cannot read " + folder + "/manifest.json");
  const json manifest = json::parse(stream);
  std::vector<ManifestFile> files;
  for (const auto& [name, object] : manifest.at("files").items()) files.push_back(ReadFile(folder, name, object));
  return files;
}

}  // namespace tarvex::test
