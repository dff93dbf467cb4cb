// The stream record: one track as pins and stream selection see it. A value; every output pin holds
// its own copy, so a record may be replaced or dropped without touching a pin.
#pragma once

#include <cstdint>
#include <string>

#include "framework/media_type.h"
#include "framework/text_conversion.h"

namespace tarvex {

/// Matroska track types; also the stream-selection groups.
inline constexpr std::uint32_t kTrackTypeVideo = 1;
inline constexpr std::uint32_t kTrackTypeAudio = 2;
inline constexpr std::uint32_t kTrackTypeSubtitle = 17;

/// Name of the stream that switches subtitles off.
inline constexpr OLECHAR kNoSubtitles[] = OLESTR("No Subtitles");

struct TrackPinInfo {
  std::uint32_t trackNumber = 0;
  std::uint32_t trackType = 0;
  std::string language = "eng";  ///< the format's default
  WideString trackName;
  std::string codecId;
  bool defaultFlag = true;
  bool forcedFlag = false;
  CMediaType mediaType;
};

}  // namespace tarvex
