// What `mkvhost info` found out about a file, as plain values, and its two forms. Filled by the command,
// one thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/report/media_type_text.h"

namespace tarvex::host {

struct PinReport {
  std::string name;
  std::optional<std::uint32_t> stream;  ///< index of the stream that the pin carries, if it is listed
  std::vector<MediaTypeText> mediaTypes;
};

// Groups of streams.
inline constexpr std::uint32_t kVideoGroup = 1;
inline constexpr std::uint32_t kAudioGroup = 2;
inline constexpr std::uint32_t kSubtitleGroup = 17;

/// As IAMStreamSelect gives it.
struct StreamReport {
  std::uint32_t group = 0;
  std::string name;
  bool enabled = false;
  bool exclusive = false;  ///< enabled, and no other of its group can be at the same time
};

struct ChapterReport {
  std::string name;
  std::int64_t start = 0;  ///< 100 ns units
  std::int64_t end = 0;
};

/// As IAMExtendedSeeking gives them: whole seconds.
struct MarkerReport {
  std::string name;
  double seconds = 0;
};

/// All texts are UTF-8 as they came, not escaped.
struct InfoReport {
  std::string file;
  std::string docType;
  std::optional<std::int64_t> duration;  ///< 100 ns units
  bool separatePins = false;
  std::vector<PinReport> pins;
  std::vector<StreamReport> streams;
  std::optional<std::int32_t> seekCapabilities;
  std::vector<MarkerReport> markers;
  std::vector<ChapterReport> chapters;
};

/// Tables for people, safe for a terminal.
std::string InfoTable(const InfoReport& report);

/// One JSON object, indented, with a line feed at the end. Plain ASCII: other characters are escaped.
std::string InfoJson(const InfoReport& report);

}  // namespace tarvex::host
