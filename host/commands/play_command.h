// `mkvhost play`: plays a file through the platform's decoders. Main thread.
#pragma once

#include "host/commands/play_options.h"

namespace tarvex::host {

/// Throws HostError.
void RunPlay(const PlayOptions& options);

}  // namespace tarvex::host
