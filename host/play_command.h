// `mkvhost play`: plays a file through the platform's decoders. Main thread.
#pragma once

#include <optional>

#include "host/graph_session.h"

namespace tarvex::host {

struct PlayOptions {
  SessionOptions session;
  bool withoutClock = false;            ///< as fast as data flows
  std::optional<double> secondsAtMost;  ///< of the clock on the wall
};

/// Throws HostError.
void RunPlay(const PlayOptions& options);

}  // namespace tarvex::host
