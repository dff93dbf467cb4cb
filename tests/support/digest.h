// Checksums of bytes in lower-case hexadecimal, as the corpus manifest writes them. Free functions; any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "framework/platform/digest.h"

namespace tarvex::test {

std::string HexDigest(DigestAlgorithm algorithm, std::span<const std::uint8_t> bytes);
inline std::string Sha256Of(std::string_view text) {
  return HexDigest(DigestAlgorithm::kSha256, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

}  // namespace tarvex::test
