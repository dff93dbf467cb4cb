// What the play command is told. Times are 100 ns units.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/graph/graph_session.h"

namespace tarvex::host {

struct PlayOptions {
  SessionOptions session;
  bool withoutClock = false;             ///< as fast as data flows
  std::optional<std::int64_t> limit;     ///< of the clock on the wall
  std::optional<std::int64_t> start;     ///< of the file, like the following
  std::optional<std::int64_t> stop;      ///< after start, if both are given
  std::optional<std::uint32_t> chapter;  ///< where to start instead, counted from 1
  std::vector<std::int64_t> seeks;       ///< made one after another while playing
  std::optional<std::string> audio;      ///< as FindStream takes it
  std::optional<std::string> subtitle;   ///< likewise

  /// Playing may seek; keys need it as well.
  bool Seeks() const noexcept { return start || stop || chapter || !seeks.empty(); }
};

}  // namespace tarvex::host
