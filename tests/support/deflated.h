// Bytes packed as a track with zlib compression holds them. Free function; any thread. Takes zlib.
#pragma once

#include <zlib.h>

#include <stdexcept>

#include "tests/support/ebml_writer.h"

namespace tarvex::test {

inline ByteString Deflated(const ByteString& plain) {
  uLongf size = compressBound(static_cast<uLong>(plain.size()));
  ByteString packed(size);
  if (compress(packed.data(), &size, plain.data(), static_cast<uLong>(plain.size())) != Z_OK) {
    throw std::runtime_error("zlib");
  }
  packed.resize(size);
  return packed;
}

}  // namespace tarvex::test
