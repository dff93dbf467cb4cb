#include "tests/support/digest.h"

namespace tarvex::test {

std::string HexDigest(DigestAlgorithm algorithm, std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  Digest digest(algorithm);
  digest.Add(bytes);
  std::string text;
  for (const std::uint8_t byte : digest.Finish()) text.append({kDigits[byte >> 4U], kDigits[byte & 15U]});
  return text;
}

}  // namespace tarvex::test
