#include "tests/support/digest.h"

#include <vector>

namespace tarvex::test {
namespace {

std::string Hex(const std::vector<std::uint8_t>& digest) {
  static constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : digest) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 15U];
  }
  return text;
}

}  // namespace

std::string Sha1Of(Bytes bytes) {
  Digest digest(DigestAlgorithm::kSha1);
  digest.Add(bytes);
  return Hex(digest.Finish());
}

std::string Sha256::Finish() { return Hex(m_digest.Finish()); }

}  // namespace tarvex::test
