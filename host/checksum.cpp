#include "host/checksum.h"

#include <gcrypt.h>

#include "host/media_type_text.h"

namespace tarvex::host {

namespace {

// The library wants to be asked for its version once before anything else.
void PrepareLibrary() {
  static const bool prepared = [] {
    gcry_check_version(nullptr);
    gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    return true;
  }();
  static_cast<void>(prepared);
}

std::string DigestText(int algorithm, std::span<const std::uint8_t> bytes) {
  PrepareLibrary();
  std::vector<std::uint8_t> digest(gcry_md_get_algo_dlen(algorithm));
  gcry_md_hash_buffer(algorithm, digest.data(), bytes.data(), bytes.size());
  return HexText(digest);
}

}  // namespace

std::string Sha1Text(std::span<const std::uint8_t> bytes) { return DigestText(GCRY_MD_SHA1, bytes); }

std::string Sha256Text(std::span<const std::uint8_t> bytes) { return DigestText(GCRY_MD_SHA256, bytes); }

}  // namespace tarvex::host
