// The corpus manifest as values: what each file holds and what a reader must find in it. Read once by
// corpus_test; never changed afterwards.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tarvex::test {

/// One track entry.
struct ManifestTrack {
  std::optional<std::uint32_t> number;
  std::optional<std::uint32_t> type;
  std::string codecId;
  std::string language;  ///< "eng" when absent
  std::string name;
};

/// Times in 100 ns units; the payload is that after content decoding.
struct ManifestFrame {
  std::int64_t time = 0;
  std::int64_t duration = 0;
  bool key = false;
  std::uint32_t size = 0;
  std::string sha1;

  friend bool operator==(const ManifestFrame&, const ManifestFrame&) = default;
};

/// The frames of one track number, in file order.
struct ManifestFrames {
  std::size_t count = 0;
  std::size_t afterDamage = 0;       ///< how many of them come after the first damage
  std::vector<ManifestFrame> rows;   ///< all of them, or empty when there are sums instead
  std::vector<ManifestFrame> first;  ///< with sums: the first few
  std::string linesSha256;           ///< over LineOf of every frame
};

struct ManifestChapter {
  std::string name;  ///< UTF-8
  std::int64_t start = 0;
  std::int64_t end = 0;
};

/// A seek and what it must deliver, where no rule tells.
struct ManifestSeek {
  std::int64_t start = 0;
  std::int64_t segment = 0;         ///< the start of what is delivered
  std::vector<std::size_t> frames;  ///< so many of the last ones of each pin
};

struct ManifestFile {
  std::string name;  ///< below the corpus folder
  std::string path;
  std::string docType;
  bool opens = true;
  std::string message;  ///< of a refusal; empty where the text is left open
  bool robustness = false;
  bool upToDamage = false;
  std::int64_t duration = 0;  ///< 100 ns units
  std::vector<ManifestTrack> tracks;
  std::map<std::uint32_t, ManifestFrames> frames;
  std::vector<ManifestChapter> chapters;
  std::vector<ManifestSeek> seeks;
};

/// The line of the sums: "time duration key size sha1\n".
std::string LineOf(const ManifestFrame& frame);

/// Where the corpus is: the folder that TARVEX_CORPUS names, or the repository's own choice.
std::string CorpusFolder();

/// Its name as that of a test case.
std::string CaseName(const ManifestFile& file);

/// All files of the corpus in `folder`. Throws std::exception when the manifest cannot be read.
std::vector<ManifestFile> ReadManifest(const std::string& folder);

}  // namespace tarvex::test
