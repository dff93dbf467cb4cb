// Checksums of bytes in lower-case hexadecimal, as the corpus manifest writes them. Values; any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "framework/platform/digest.h"

namespace tarvex::test {

using Bytes = std::span<const std::uint8_t>;

std::string Sha1Of(Bytes bytes);

/// A SHA-256 over pieces given one after another.
class Sha256 {
 public:
  void Add(Bytes bytes) { m_digest.Add(bytes); }
  void Add(std::string_view text) { Add(Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size())); }
  /// Of all that was added. Nothing may be added afterwards.
  std::string Finish();

 private:
  Digest m_digest{DigestAlgorithm::kSha256};
};

}  // namespace tarvex::test
