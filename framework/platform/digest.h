// Checksums by the system's own library: bcrypt on Windows, libgcrypt elsewhere. A library of its own, since
// the module needs none. One thread at a time for each object.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tarvex {

enum class DigestAlgorithm { kSha1, kSha256 };

class Digest {
 public:
  /// Throws std::runtime_error when the system refuses.
  explicit Digest(DigestAlgorithm algorithm);
  ~Digest();
  Digest(Digest&&) noexcept;
  Digest& operator=(Digest&&) noexcept;
  Digest(const Digest&) = delete;
  Digest& operator=(const Digest&) = delete;

  /// Throws std::runtime_error.
  void Add(std::span<const std::uint8_t> bytes);
  /// Of all that was added. Nothing may be added afterwards. Throws std::runtime_error.
  std::vector<std::uint8_t> Finish();

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace tarvex
