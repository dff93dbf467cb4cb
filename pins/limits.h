// What output pins may hold, for each connection and for all of a file together: every bound by its name, with its
// unit and its reason. Constants; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "scanner/limits.h"

namespace tarvex::limits {

/// Buffers of an output pin's ring, and bytes of each: what the pin asks for when it is connected. One
/// sample may take the whole ring.
inline constexpr std::int32_t kRingBuffers = 200;
inline constexpr std::int32_t kRingBufferBytes = 52428;
inline constexpr std::size_t kLargestSample = std::size_t{kRingBuffers} * kRingBufferBytes;
static_assert(kLargestSample < kInflatedFrame, "a frame that a pin can deliver must not be cut short");
/// Samples that may be out of a ring at a time: tiny frames must not take memory without limit.
inline constexpr std::int32_t kSamplesOut = 1 << 15;

/// Frames of so many bytes go downstream where they were read to, as far as that memory may be kept: a copy would take
/// longer than all the rest of a frame's way.
inline constexpr std::size_t kLargeFrame = 4096;

/// Bytes of the frames that all pins hold back together while the video pin looks for the start of a segment. Then
/// it takes the best start there is: a stream may have no second key frame.
inline constexpr std::size_t kHeldBytes = 32 * kMebibyte;

}  // namespace tarvex::limits
