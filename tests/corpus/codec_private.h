// Finds a codec private in a file by length and checksum, so that what the manifest says about it can
// be checked byte for byte without a reader. Free function; any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "tests/corpus/manifest.h"
#include "tests/support/digest.h"

namespace tarvex::test {

/// The bytes, or none when the file does not hold a CodecPrivate element with them.
std::vector<std::uint8_t> FindCodecPrivate(Bytes file, const Blob& blob);

}  // namespace tarvex::test
