// The checksum of a sample's bytes. A free function; any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tarvex::host {

/// SHA-1 in lower-case hexadecimal digits. Throws std::runtime_error when the system makes none.
std::string Sha1Text(std::span<const std::uint8_t> bytes);

}  // namespace tarvex::host
