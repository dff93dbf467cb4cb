// Checksums of bytes in lower-case hexadecimal, as the corpus manifest writes them. Values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace tarvex::test {

using Bytes = std::span<const std::uint8_t>;

std::string Sha1Of(Bytes bytes);

/// A SHA-256 over pieces given one after another.
class Sha256 {
 public:
  Sha256();
  ~Sha256();
  Sha256(Sha256&&) noexcept;
  Sha256& operator=(Sha256&&) noexcept;
  Sha256(const Sha256&) = delete;
  Sha256& operator=(const Sha256&) = delete;

  void Add(Bytes bytes);
  void Add(std::string_view text);
  /// Of all that was added. Nothing may be added afterwards.
  std::string Finish();

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace tarvex::test
