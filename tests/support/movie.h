// Makes small Matroska files in memory, so that a test can say how much of what it needs: tracks,
// frames, sizes. Free function; any thread.
#pragma once

#include <cstdint>
#include <vector>

namespace tarvex::test {

/// Tracks are numbered from 1: videos first, then audio, then subtitles. Every frame is a key frame and
/// lasts 40 ms; every track has one at each time.
struct MovieShape {
  unsigned videos = 1;
  unsigned audios = 1;
  unsigned subtitles = 0;
  unsigned frames = 100;  ///< of each track
  unsigned framesPerCluster = 25;
  std::uint32_t frameSize = 200;  ///< bytes
  std::uint32_t duration = 0;     ///< milliseconds that the file says it lasts; 0: nothing
};

std::vector<std::uint8_t> MakeMovie(const MovieShape& shape);

}  // namespace tarvex::test
