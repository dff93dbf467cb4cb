// What `mkvhost dump` writes, as plain values, and its two forms. Lines end with a line feed. Free
// functions; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/report/media_type_text.h"

namespace tarvex::host {

/// One thing that reached a pin, in order. Times in 100 ns units.
struct DumpEvent {
  enum class Kind { kSegment, kSample, kEnd };

  Kind kind = Kind::kSample;
  std::optional<std::int64_t> start;
  std::optional<std::int64_t> stop;
  double rate = 1.0;  ///< of a segment
  bool sync = false;
  bool discontinuity = false;
  bool preroll = false;
  bool typeChange = false;
  std::uint32_t size = 0;  ///< bytes of a sample
  std::string sha1;        ///< of a sample's bytes
};

struct DumpPin {
  std::size_t index = 0;
  std::string name;
  std::optional<std::uint32_t> stream;  ///< index of the stream that the pin carries
  MediaTypeText mediaType;
};

// One JSON object on each line.
std::string PinJsonLine(const DumpPin& pin);
std::string EventJsonLine(const DumpPin& pin, const DumpEvent& event, std::size_t sample);

// One line of text for each, in columns: pin, what, number, start, stop, flags (K key, D discontinuity,
// P preroll, T new media type), size, checksum.
std::string PinTextLine(const DumpPin& pin);
std::string EventTextLine(const DumpPin& pin, const DumpEvent& event, std::size_t sample);

}  // namespace tarvex::host
