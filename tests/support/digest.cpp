// See digest.h. libgcrypt does the work; it is initialised with the first checksum.
#include "tests/support/digest.h"

#include <gcrypt.h>

#include <array>
#include <stdexcept>

namespace tarvex::test {
namespace {

void Initialise() {
  static const bool ready = [] {
    gcry_check_version(nullptr);
    gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    return true;
  }();
  (void)ready;
}

std::string Hex(Bytes digest) {
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
  Initialise();
  std::array<std::uint8_t, 20> digest{};
  gcry_md_hash_buffer(GCRY_MD_SHA1, digest.data(), bytes.data(), bytes.size());
  return Hex(digest);
}

struct Sha256::State {
  gcry_md_hd_t handle = nullptr;

  State() {
    Initialise();
    if (gcry_md_open(&handle, GCRY_MD_SHA256, 0) != 0) throw std::runtime_error("no SHA-256");
  }
  ~State() { gcry_md_close(handle); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
};

Sha256::Sha256() : m_state(std::make_unique<State>()) {}
Sha256::~Sha256() = default;
Sha256::Sha256(Sha256&&) noexcept = default;
Sha256& Sha256::operator=(Sha256&&) noexcept = default;

void Sha256::Add(Bytes bytes) { gcry_md_write(m_state->handle, bytes.data(), bytes.size()); }

void Sha256::Add(std::string_view text) { gcry_md_write(m_state->handle, text.data(), text.size()); }

std::string Sha256::Finish() {
  const std::uint8_t* digest = gcry_md_read(m_state->handle, GCRY_MD_SHA256);
  return Hex({digest, gcry_md_get_algo_dlen(GCRY_MD_SHA256)});
}

}  // namespace tarvex::test
