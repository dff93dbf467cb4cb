// Checksums by the system's own library: bcrypt on Windows, libgcrypt elsewhere. A library of its own, since
// the module needs none. One thread at a time for each object.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tarvex {

enum class DigestAlgorithm { kSha1, kSha256 };

class CDigest {
 public:
  /// Throws std::runtime_error when the system refuses.
  explicit CDigest(DigestAlgorithm algorithm);
  ~CDigest();
  CDigest(CDigest&&) noexcept;
  CDigest& operator=(CDigest&&) noexcept;
  CDigest(const CDigest&) = delete;
  CDigest& operator=(const CDigest&) = delete;

  /// Throws std::runtime_error.
  void Add(std::span<const std::uint8_t> bytes);
  /// Of all that was added. Nothing may be added afterwards. Throws std::runtime_error.
  std::vector<std::uint8_t> Finish();

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace tarvex
