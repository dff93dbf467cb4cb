// See expected_pins.h.
#include "tests/corpus/expected_pins.h"

#include <algorithm>
#include <array>

#include "tests/support/digest.h"

namespace tarvex::test {
namespace {

constexpr std::size_t kMostShown = 4;

std::string Describe(const ManifestFrame& frame) {
  std::string line = LineOf(frame);
  line.pop_back();
  return '[' + line + ']';
}

void CompareRows(const std::vector<ManifestFrame>& expected, const std::vector<ManifestFrame>& delivered,
                 std::vector<std::string>& out) {
  for (std::size_t k = 0; k < std::min(expected.size(), delivered.size()) && out.size() < kMostShown; ++k) {
    if (expected[k] == delivered[k]) continue;
    out.push_back("frame " + std::to_string(k) + " is " + Describe(delivered[k]) + ", not " + Describe(expected[k]));
  }
}

std::string SumOf(const std::vector<ManifestFrame>& frames) {
  Sha256 sum;
  for (const ManifestFrame& frame : frames) sum.Add(LineOf(frame));
  return sum.Finish();
}

const ManifestFrames& FramesOf(const ManifestFile& file, const ManifestTrack& track) {
  static const ManifestFrames none;
  const auto found = file.frames.find(track.number.value());
  return found == file.frames.end() ? none : found->second;
}

// The other streams begin with the first picture that can be decoded.
std::int64_t FirstPicture(const ManifestFile& file) {
  for (const ManifestTrack& track : file.tracks) {
    if (track.type != 1) continue;
    const ManifestFrames& frames = FramesOf(file, track);
    for (const ManifestFrame& frame : frames.rows.empty() ? frames.first : frames.rows) {
      if (frame.key) return frame.time;
    }
  }
  return 0;
}

// Sound before the start is not wanted, and pictures before the first key frame cannot be decoded.
// Removes them from `rows` and answers them. They all lie at the front.
std::vector<ManifestFrame> TakeDropped(const ManifestFile& file, const ManifestTrack& track,
                                       std::vector<ManifestFrame>& rows) {
  const std::int64_t first = FirstPicture(file);
  const auto wanted = [&track, first](const ManifestFrame& frame) {
    if (track.type == 1) return frame.key;
    return (frame.time >= 0 || frame.time + frame.duration >= 0) && (first <= 0 || frame.time >= first);
  };
  const auto kept = std::find_if(rows.begin(), rows.end(), wanted);
  std::vector<ManifestFrame> dropped(rows.begin(), kept);
  rows.erase(rows.begin(), kept);
  return dropped;
}

void CompareCount(std::size_t expected, std::size_t delivered, std::vector<std::string>& out) {
  if (expected != delivered) {
    out.push_back(std::to_string(delivered) + " frames, not " + std::to_string(expected));
  }
}

void CompareExactly(const ManifestFile& file, const ManifestTrack& track, const std::vector<ManifestFrame>& delivered,
                    std::vector<std::string>& out) {
  const ManifestFrames& frames = FramesOf(file, track);
  std::vector<ManifestFrame> rows = frames.rows.empty() ? frames.first : frames.rows;
  std::vector<ManifestFrame> all = TakeDropped(file, track, rows);
  CompareCount(frames.count - all.size(), delivered.size(), out);
  CompareRows(rows, delivered, out);
  all.insert(all.end(), delivered.begin(), delivered.end());
  if (frames.rows.empty() && !frames.linesSha256.empty() && SumOf(all) != frames.linesSha256) {
    out.push_back("the frames differ somewhere");
  }
}

// What comes before the damage must be there; what comes after may be lost.
void CompareUpToDamage(const ManifestFrames& frames, const std::vector<ManifestFrame>& delivered,
                       std::vector<std::string>& out) {
  const std::size_t sure = frames.count - frames.afterDamage;
  if (delivered.size() < sure) {
    out.push_back(std::to_string(delivered.size()) + " frames, where " + std::to_string(sure) + " precede the damage");
  }
  std::vector<ManifestFrame> rows = frames.rows.empty() ? frames.first : frames.rows;
  rows.resize(std::min(rows.size(), sure));
  CompareRows(rows, delivered, out);
}

}  // namespace

std::vector<ExpectedPin> ExpectPins(const ManifestFile& file) {
  std::map<std::uint32_t, const ManifestTrack*> tracks;
  for (const ManifestTrack& track : file.tracks) tracks.emplace(track.number.value(), &track);
  const auto placeholder = std::find_if(tracks.begin(), tracks.end(),
                                        [](const auto& entry) { return entry.second->name == "No Subtitles"; });
  if (placeholder != tracks.end()) tracks.erase(placeholder);
  std::map<std::uint32_t, int> counters;
  std::vector<ExpectedPin> pins;
  for (const auto& [number, track] : tracks) {
    const std::uint32_t type = track->type.value();
    const std::string kind = type == 1 ? "Video " : type == 2 ? "Audio " : "Subtitle ";
    pins.push_back({track, kind + std::to_string(counters[type]++) + " (lang:" + track->language + ")"});
  }
  return pins;
}

std::vector<std::string> CompareFrames(const ManifestFile& file, const ManifestTrack& track,
                                       const std::vector<ManifestFrame>& delivered) {
  std::vector<std::string> out;
  if (file.upToDamage) {
    CompareUpToDamage(FramesOf(file, track), delivered, out);
  } else {
    CompareExactly(file, track, delivered, out);
  }
  return out;
}

std::string ThroughCodePage(const std::string& utf8) {
  static constexpr std::array<char16_t, 32> kUpperControls = {
      0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
  std::string out;
  for (const char letter : utf8) {
    const auto byte = static_cast<std::uint8_t>(letter);
    const std::uint32_t code = byte >= 0x80 && byte < 0xA0 ? kUpperControls[byte - 0x80U] : byte;
    if (code < 0x80) {
      out += static_cast<char>(code);
    } else if (code < 0x800) {
      out += {static_cast<char>(0xC0U | code >> 6U), static_cast<char>(0x80U | (code & 63U))};
    } else {
      out += {static_cast<char>(0xE0U | code >> 12U), static_cast<char>(0x80U | (code >> 6U & 63U)),
              static_cast<char>(0x80U | (code & 63U))};
    }
  }
  return out;
}

}  // namespace tarvex::test
