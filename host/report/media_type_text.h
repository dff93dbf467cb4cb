// A media type decoded into names and numbers, for tables and JSON. Free functions over values; any
// thread.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "framework/platform/platform.h"

namespace tarvex::host {

/// One value of a format block under a stable name in lower_snake form.
struct FormatField {
  std::string name;
  std::variant<std::int64_t, std::string> value;

  friend bool operator==(const FormatField&, const FormatField&) = default;
};

struct MediaTypeText {
  GUID major{};
  GUID subtype{};
  GUID format{};
  bool fixedSizeSamples = false;
  bool temporalCompression = false;
  std::uint32_t sampleSize = 0;
  std::vector<std::uint8_t> block;
  std::vector<FormatField> fields;  ///< what the block says, as far as it reaches
  std::string summary;              ///< the same in a few words; empty for a block of unknown form
};

/// A block that is shorter than its format demands has no fields and says so in its summary.
MediaTypeText DescribeMediaType(const AM_MEDIA_TYPE& type);

/// "Video AVC1 (MPEG2VIDEOINFO): 640x360, ..." on one line; not escaped.
std::string MediaTypeLine(const MediaTypeText& text);

/// Two digits for each byte, without blanks.
std::string HexText(const std::vector<std::uint8_t>& bytes);

}  // namespace tarvex::host
