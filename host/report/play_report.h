// What `mkvhost play` says while and after it plays, as plain values, and the text of it. Free functions;
// any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarvex::host {

struct PlayedStream {
  std::string pin;
  std::string kind;       ///< "video", "audio" or "subtitle"
  std::string stream;     ///< as info names it
  std::string mediaType;  ///< on one line
  std::string renderer;   ///< filters it goes through; empty for one that is counted
  std::string reason;     ///< why it is only counted
  std::uint64_t samples = 0;
  std::uint64_t bytes = 0;
  std::int64_t span = 0;  ///< 100 ns units from the first sample's start to the last one's
};

struct PlayProgress {
  std::int64_t position = 0;             ///< 100 ns units
  std::optional<std::int64_t> duration;  ///< 100 ns units
  double seconds = 0;                    ///< of the clock on the wall
  bool paused = false;
  std::vector<PlayedStream> streams;
};

/// "0:00:01.200 / 0:00:05.000  24 %  video 30  audio 52  1.25 MB/s", without a line feed.
std::string ProgressText(const PlayProgress& progress);

/// "audio 2: A: name", safe to show: what a key made the player go to.
std::string ChoiceText(const std::string& kind, std::size_t number, const std::string& name);

/// A table of at most 100 characters with one row for each stream and one for all: its rate is what was read in
/// a second on the wall, that of a stream is per second of the file. Below it a line for each stream says what
/// it went through, or why it was only counted.
std::string SummaryText(const std::vector<PlayedStream>& streams, double seconds);

}  // namespace tarvex::host
