// `mkvhost info`: what is in a file, as the splitter offers it. Main thread.
#pragma once

#include "host/graph/graph_session.h"

namespace tarvex::host {

struct InfoOptions {
  SessionOptions session;
  bool json = false;
};

/// Throws HostError.
void RunInfo(const InfoOptions& options);

}  // namespace tarvex::host
