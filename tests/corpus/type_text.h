// A media type as one line of text, so that tests compare it with a line that was written by hand.
#pragma once

#include <string>

#include "framework/platform/platform.h"

namespace tarvex::test {

/// The line of the media type that the pin offers first; empty when it offers none. Major type, subtype and format
/// type, of which only the first part is written where the rest is that of the FOURCC range; bFixedSizeSamples,
/// bTemporalCompression and lSampleSize; and the format block in hexadecimal, where [n] stands for n bytes of zero, or
/// - without a block.
std::string OfferedType(IPin* pin);

}  // namespace tarvex::test
