// Which tracks of a file get a pin when every stream has its own, in which order and under which name,
// and what each pin must deliver. Values worked out from the manifest alone.
#pragma once

#include <string>
#include <vector>

#include "tests/corpus/manifest.h"

namespace tarvex::test {

struct ExpectedPin {
  const ManifestTrack* track = nullptr;  ///< in the manifest entry
  std::string name;                      ///< UTF-8
};

/// In the order of the pins.
std::vector<ExpectedPin> ExpectPins(const ManifestFile& file);

/// What is wrong with what one pin delivered, against the manifest; empty when nothing is. Frames that
/// lie before time zero with their whole length are delivered for video alone, and the other streams
/// begin with the first key frame of the video.
std::vector<std::string> CompareFrames(const ManifestFile& file, const ManifestTrack& track,
                                       const std::vector<ManifestFrame>& delivered);

/// A chapter name as the module gives it: the bytes of its UTF-8 form read in code page 1252, and
/// written in UTF-8 again.
std::string ThroughCodePage(const std::string& utf8);

}  // namespace tarvex::test
