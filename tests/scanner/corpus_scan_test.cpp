// Scans every file of a corpus (environment variable TARVEX_CORPUS) and compares headers, seek index,
// chapters and all frames with the corpus manifest. Frames behind damage may be missing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "framework/com_ptr.h"
#include "framework/message_error.h"
#include "framework/text_conversion.h"
#include "scanner/read_ahead_reader.h"
#include "tests/scanner/recording.h"
#include "tests/support/digest.h"

namespace tarvex::test {
namespace {

using nlohmann::json;

/// One track's frames as the manifest writes them: [time, duration, key, size, sha1].
using FrameRow = std::tuple<std::int64_t, std::int64_t, int, std::size_t, std::string>;

struct TrackFrames {
  std::vector<FrameRow> rows;
  std::string payload;
};

class DigestingCallback final : public RecordingCallback {
 public:
  explicit DigestingCallback(const CEbmlScanner& owner) : scanner(owner) {}

  bool OnData(const FrameInfo& frame) override {
    FrameInfo decoded = frame;
    DecodedFrame owner;
    scanner.Decode(decoded, owner);
    TrackFrames& track = frames[frame.trackNumber];
    track.rows.emplace_back(static_cast<std::int64_t>(decoded.start), static_cast<std::int64_t>(decoded.duration),
                            decoded.keyFrame ? 1 : 0, decoded.size, Sha1Of({decoded.data, decoded.size}));
    track.payload.append(reinterpret_cast<const char*>(decoded.data), decoded.size);
    return true;
  }

  const CEbmlScanner& scanner;
  std::map<std::uint64_t, TrackFrames> frames;
};

std::string LineOf(const FrameRow& row) {
  const auto& [time, duration, key, size, sha1] = row;
  return std::to_string(time) + " " + std::to_string(duration) + " " + std::to_string(key) + " " +
         std::to_string(size) + " " + sha1 + "\n";
}

void CompareSums(const TrackFrames& track, const json& expected) {
  Sha256 lines;
  Sha256 payload;
  for (const FrameRow& row : track.rows) lines.Add(LineOf(row));
  payload.Add(track.payload);
  EXPECT_EQ(lines.Finish(), expected.at("sha256_lines"));
  EXPECT_EQ(payload.Finish(), expected.at("sha256_payload"));
}

void CompareRows(const TrackFrames& track, const json& expected, std::size_t count) {
  for (std::size_t index = 0; index < count && index < track.rows.size(); ++index) {
    const json& row = expected.at("frames")[index];
    const FrameRow wanted(row[0], row[1], row[2], row[3], row[4]);
    EXPECT_EQ(LineOf(track.rows[index]), LineOf(wanted)) << "frame " << index;
    if (track.rows[index] != wanted) return;
  }
}

void CompareTrack(const TrackFrames& track, const json& expected) {
  const std::size_t count = expected.at("count");
  const std::size_t behindDamage = expected.value("after_damage", std::size_t{0});
  if (behindDamage == 0) {
    EXPECT_EQ(track.rows.size(), count);
  } else {
    EXPECT_GE(track.rows.size(), count - behindDamage);
  }
  if (expected.contains("frames")) {
    CompareRows(track, expected, count - behindDamage);
  } else if (track.rows.size() == count) {
    CompareSums(track, expected);
  }
}

void CompareFrames(std::map<std::uint64_t, TrackFrames>& found, const json& expected) {
  for (const auto& [number, track] : expected.items()) {
    SCOPED_TRACE("track " + number);
    CompareTrack(found[std::stoull(number)], track);
    found.erase(std::stoull(number));
  }
  for (const auto& [number, track] : found) ADD_FAILURE() << "frames of track " << number << ", which has none";
}

std::string LineOf(const SeekPoint& point) {
  return std::to_string(point.position) + " " + std::to_string(static_cast<std::int64_t>(point.time)) + "\n";
}

void CompareIndex(const std::vector<SeekPoint>& index, const json& expected) {
  ASSERT_EQ(index.size(), expected.at("count"));
  if (!expected.contains("entries")) {
    Sha256 lines;
    for (const SeekPoint& point : index) lines.Add(LineOf(point));
    EXPECT_EQ(lines.Finish(), expected.at("sha256"));
    return;
  }
  for (std::size_t entry = 0; entry < index.size(); ++entry) {
    const json& wanted = expected.at("entries")[entry];
    EXPECT_EQ(LineOf(index[entry]), std::to_string(wanted[0].get<std::uint64_t>()) + " " +
                                        std::to_string(wanted[1].get<std::int64_t>()) + "\n");
  }
}

// The manifest has the names as text; they pass through the narrow code page.
void CompareChapters(const std::vector<ScannedChapter>& chapters, const json& expected) {
  ASSERT_EQ(chapters.size(), expected.size());
  for (std::size_t entry = 0; entry < chapters.size(); ++entry) {
    EXPECT_EQ(chapters[entry].start, expected[entry].at("start"));
    EXPECT_EQ(chapters[entry].end, expected[entry].at("end"));
    const WideString name = WideFromThreadCodePage(expected[entry].at("name").get<std::string>());
    EXPECT_TRUE(chapters[entry].name.View() == name) << "chapter " << entry;
  }
}

void CompareTracks(const CEbmlScanner& scanner, const json& expected) {
  ASSERT_EQ(scanner.Tracks(), expected.size());
  for (std::uint32_t index = 0; index < scanner.Tracks(); ++index) {
    const CHeap& heap = *scanner.TrackAt(index);
    const json& track = expected[index];
    if (track.at("number").is_number()) {
      EXPECT_EQ(heap.Unsigned("KaxTrackNumber").value_or(0), track.at("number"));
    }
    if (track.at("type").is_number()) {
      EXPECT_EQ(heap.Unsigned("KaxTrackType").value_or(0), track.at("type"));
    }
    if (track.at("codec_id").is_string()) {
      EXPECT_EQ(heap.String("KaxCodecID").value_or(""), track.at("codec_id"));
    }
    const auto codecPrivate = heap.Binary("KaxCodecPrivate");
    ASSERT_EQ(codecPrivate.has_value(), !track.at("codec_private").is_null());
    if (codecPrivate) {
      EXPECT_EQ(Sha1Of(*codecPrivate), track.at("codec_private")["sha1"]);
    }
  }
}

void CompareOpened(CEbmlScanner& scanner, DigestingCallback& callback, const json& expected) {
  EXPECT_EQ(scanner.DocType(), expected.at("doc_type").is_null() ? "" : expected.at("doc_type").get<std::string>());
  EXPECT_EQ(scanner.TimecodeScale(), expected.at("timecode_scale"));
  EXPECT_EQ(scanner.Duration(), expected.at("duration"));
  CompareTracks(scanner, expected.at("tracks"));
  CompareChapters(scanner.Chapters(), expected.at("expect").at("chapters"));
  scanner.BuildIndex();
  CompareIndex(scanner.Index(), expected.at("expect").at("seek_index"));
  EXPECT_FALSE(scanner.Process());
  CompareFrames(callback.frames, expected.at("frames"));
}

/// Files that the manifest's own reader takes differently, which only must end well.
const char* ReadDifferently(const std::string& name) {
  static const std::map<std::string, const char*> kReasons = {
      {"gen/cluster_huge.mkv", "a Cluster of more than 4 GiB is no element for the walk"},
      {"gen/groups_two_blocks.mkv", "both blocks of the group are indexed"},
      {"gen/noise_in_clusters.mkv", "libmatroska takes a cue position of 2^60 or more for none"},
      {"gen/private_huge.mkv", "an element that is larger than its parent is absent"},
      {"gen/truncated_info.mkv", "an element that the end of the file cuts is absent"},
      {"gen/truncated_tracks.mkv", "an element that the end of the file cuts is absent"},
      {"gen/void_stale.mkv", "looking for elements byte by byte finds those inside a Void"},
  };
  const auto found = kReasons.find(name);
  return found == kReasons.end() ? nullptr : found->second;
}

void ScanFile(const std::string& folder, const std::string& name, const json& expected) {
  const std::string path = folder + "/" + name;
  std::ifstream file(path, std::ios::binary);
  ASSERT_TRUE(file) << path;
  MemoryReader reader(ByteString(std::istreambuf_iterator<char>(file), {}));
  const auto readAhead = MakeCom<CReadAheadReader>(&reader);
  CEbmlScanner scanner;
  DigestingCallback callback(scanner);
  scanner.SetCallback(&callback);
  const std::string message = MessageOf([&] { scanner.CanProcess(readAhead.Get()); });
  if (ReadDifferently(name) != nullptr) {
    scanner.BuildIndex();
    scanner.Process();
  } else if (expected.contains("tracks")) {
    EXPECT_EQ(message, "");
    CompareOpened(scanner, callback, expected);
  } else {
    EXPECT_EQ(message, "<CEbmlScanner::CanProcess> No segment/level 0 element found");
  }
}

TEST(CorpusScan, EveryFileGivesWhatTheManifestSays) {
  const char* other = std::getenv("TARVEX_CORPUS");  // NOLINT(concurrency-mt-unsafe): nobody sets it
  const std::string folder = other != nullptr ? other : TARVEX_SOURCE_DIR "/tests/data/corpus";
  std::ifstream file(folder + "/manifest.json");
  const json manifest = json::parse(file);
  for (const auto& [name, expected] : manifest["files"].items()) {
    SCOPED_TRACE(name);
    ScanFile(folder, name, expected);
  }
}

}  // namespace
}  // namespace tarvex::test
