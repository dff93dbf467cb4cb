#include "framework/platform/digest.h"

#include <algorithm>
#include <stdexcept>

#include "framework/platform/platform.h"

// After windows.h, which it depends on.
#include <bcrypt.h>

namespace tarvex {

namespace {

void Require(NTSTATUS status) {
  if (status < 0) throw std::runtime_error("the system makes no checksums");
}

/// Opened once for the life of the program: opening takes longer than most checksums.
struct Provider {
  explicit Provider(const wchar_t* name) { Require(BCryptOpenAlgorithmProvider(&handle, name, nullptr, 0)); }
  BCRYPT_ALG_HANDLE handle = nullptr;
};

BCRYPT_ALG_HANDLE ProviderOf(DigestAlgorithm algorithm) {
  if (algorithm == DigestAlgorithm::kSha256) {
    static const Provider provider(BCRYPT_SHA256_ALGORITHM);
    return provider.handle;
  }
  static const Provider provider(BCRYPT_SHA1_ALGORITHM);
  return provider.handle;
}

}  // namespace

struct Digest::State {
  explicit State(DigestAlgorithm algorithm) : length(algorithm == DigestAlgorithm::kSha1 ? 20 : 32) {
    Require(BCryptCreateHash(ProviderOf(algorithm), &hash, nullptr, 0, nullptr, 0, 0));
  }
  ~State() { BCryptDestroyHash(hash); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  BCRYPT_HASH_HANDLE hash = nullptr;
  ULONG length;
};

Digest::Digest(DigestAlgorithm algorithm) : m_state(std::make_unique<State>(algorithm)) {}
Digest::~Digest() = default;
Digest::Digest(Digest&&) noexcept = default;
Digest& Digest::operator=(Digest&&) noexcept = default;

void Digest::Add(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kPiece = 1U << 30U;  // the call counts in 32 bits
  for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), kPiece))) {
    const auto length = static_cast<ULONG>(std::min(bytes.size(), kPiece));
    Require(BCryptHashData(m_state->hash, const_cast<UCHAR*>(bytes.data()), length, 0));
  }
}

std::vector<std::uint8_t> Digest::Finish() {
  std::vector<std::uint8_t> digest(m_state->length);
  Require(BCryptFinishHash(m_state->hash, digest.data(), m_state->length, 0));
  return digest;
}

}  // namespace tarvex
