// What is fuzzed: each function takes one input and returns whatever the input is. What must not happen is
// what the sanitizers and the limits of the runner see. Shared by the fuzzers and by the replay test.
#pragma once

#include <cstdint>
#include <span>

namespace tarvex::fuzz {

using Input = std::span<const std::uint8_t>;

/// Opens a file, makes the seek index in both ways and looks times up in it.
void FuzzIndex(Input file);
/// Opens a file and delivers all frames, with content decoding, from the front and from the middle.
void FuzzDeliver(Input file);
/// A track entry's elements, and one frame of the track: media types and start codes. The first two bytes say how long
/// the elements are.
void FuzzTrack(Input trackAndFrame);
/// The whole filter with every pin connected; the last bytes are a script of seeks, stops and runs.
void FuzzFilter(Input fileAndScript);

struct Target {
  const char* name;  ///< also of its folders of inputs
  void (*run)(Input);
};
inline constexpr Target kTargets[] = {
    {"index", FuzzIndex}, {"deliver", FuzzDeliver}, {"track", FuzzTrack}, {"filter", FuzzFilter}};

}  // namespace tarvex::fuzz
