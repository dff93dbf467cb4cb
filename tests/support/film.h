// Films of any rate and length, made in memory: frames say where they come from, and most of their bytes are zeros
// that nobody has to keep. Free functions; any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "tests/support/sink_filter.h"
#include "tests/support/source_filter.h"

namespace tarvex::test {

/// Pictures are track 1 and come every 40 ms; each sound has a frame every 20 ms. Clusters last a second, and there
/// are no Cues. Rates are bytes a second.
struct FilmShape {
  std::uint32_t seconds = 30;
  std::uint32_t pictures = 1000000;
  std::uint32_t sound = 50000;  ///< of each
  unsigned sounds = 1;
  std::uint32_t lastSoundFrom = 0;     ///< milliseconds: before it the last sound has no frames
  std::uint32_t keyFrameEvery = 1000;  ///< milliseconds; 0: only the first is one
  bool still = false;                  ///< the first picture is the only one
  std::uint32_t picturesLag = 0;       ///< milliseconds that pictures lie in the file behind sound of their time
};

inline constexpr REFERENCE_TIME kMillisecond = 10000;  // 100 ns units
inline constexpr REFERENCE_TIME kSecond = 1000 * kMillisecond;
inline constexpr REFERENCE_TIME kPictureTime = 40 * kMillisecond;
inline constexpr REFERENCE_TIME kSoundTime = 20 * kMillisecond;

ComPtr<SourceFilter> MakeFilm(const FilmShape& shape);

/// Tracks are numbered from 1: videos first. Every frame is a key frame and
/// lasts 40 ms; every track has one at each time.
struct MovieShape {
  unsigned videos = 1;
  unsigned audios = 1;
  unsigned frames = 100;  ///< of each track
  unsigned framesPerCluster = 25;
  std::uint32_t frameSize = 200;  ///< bytes, with those that say where it comes from
  std::uint32_t duration = 0;     ///< milliseconds that the file says it lasts; 0: nothing
};
/// The whole file.
std::vector<std::uint8_t> MakeMovie(const MovieShape& shape);

}  // namespace tarvex::test
