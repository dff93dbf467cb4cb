#include "host/report/checksum.h"

#include "framework/platform/digest.h"
#include "host/report/media_type_text.h"

namespace tarvex::host {

std::string Sha1Text(std::span<const std::uint8_t> bytes) {
  Digest digest(DigestAlgorithm::kSha1);
  digest.Add(bytes);
  return HexText(digest.Finish());
}

}  // namespace tarvex::host
