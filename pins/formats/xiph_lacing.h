// The walk over packets in Xiph lacing, as the codec private of Vorbis tracks holds its headers. A pure
// function over bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarvex {

/// The packets, in order, as views into `bytes`: as many as the count byte says and the one that takes
/// the rest. Nothing when sizes or packets run past the end, or when there is not even a count byte.
std::optional<std::vector<std::span<const std::uint8_t>>> ReadXiphLacing(std::span<const std::uint8_t> bytes);

}  // namespace tarvex
