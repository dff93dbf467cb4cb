// Checksums of sample bytes, by libgcrypt. Free functions; any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tarvex::host {

// In lower-case hexadecimal digits.
std::string Sha1Text(std::span<const std::uint8_t> bytes);
std::string Sha256Text(std::span<const std::uint8_t> bytes);

}  // namespace tarvex::host
