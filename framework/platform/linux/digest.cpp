#include "framework/platform/digest.h"

#include <gcrypt.h>

#include <stdexcept>

namespace tarvex {

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

}  // namespace

struct Digest::State {
  explicit State(DigestAlgorithm wanted) : algorithm(wanted == DigestAlgorithm::kSha1 ? GCRY_MD_SHA1 : GCRY_MD_SHA256) {
    PrepareLibrary();
    if (gcry_md_open(&hash, algorithm, 0) != 0) throw std::runtime_error("libgcrypt makes no checksums");
  }
  ~State() { gcry_md_close(hash); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  int algorithm;
  gcry_md_hd_t hash = nullptr;
};

Digest::Digest(DigestAlgorithm algorithm) : m_state(std::make_unique<State>(algorithm)) {}
Digest::~Digest() = default;
Digest::Digest(Digest&&) noexcept = default;
Digest& Digest::operator=(Digest&&) noexcept = default;

void Digest::Add(std::span<const std::uint8_t> bytes) { gcry_md_write(m_state->hash, bytes.data(), bytes.size()); }

std::vector<std::uint8_t> Digest::Finish() {
  const std::uint8_t* digest = gcry_md_read(m_state->hash, m_state->algorithm);
  return {digest, digest + gcry_md_get_algo_dlen(m_state->algorithm)};
}

}  // namespace tarvex
