// The media type that a track must get, worked out from the manifest and the file's own codec private,
// independently of the product's builders: bytes at published offsets.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "framework/platform/platform.h"
#include "tests/corpus/manifest.h"
#include "tests/support/digest.h"

namespace tarvex::test {

struct ExpectedMediaType {
  GUID major{};
  GUID subtype{};
  GUID format{};
  bool fixedSize = true;
  bool temporalCompression = false;
  std::uint32_t sampleSize = 1;
  std::vector<std::uint8_t> block = {};
};

/// Of a video, audio or subtitle track that opens.
ExpectedMediaType ExpectMediaType(const ManifestTrack& track, Bytes codecPrivate);

/// What differs, one clause per field; empty when nothing does.
std::string Differences(const ExpectedMediaType& expected, const AM_MEDIA_TYPE& actual);

// One per kind of track.
ExpectedMediaType ExpectVideoType(const ManifestTrack& track, Bytes codecPrivate);
ExpectedMediaType ExpectAudioType(const ManifestTrack& track, Bytes codecPrivate);
ExpectedMediaType ExpectSubtitleType(const ManifestTrack& track, Bytes codecPrivate);

/// {first-0000-0010-8000-00AA00389B71}: FOURCC and format tag subtypes.
GUID BaseGuid(std::uint32_t first);
std::uint32_t FourCc(std::string_view text);

}  // namespace tarvex::test
