// `mkvhost dump`: every sample that the splitter delivers, as fast as it delivers them. Main thread.
#pragma once

#include "host/graph/graph_session.h"

namespace tarvex::host {

struct DumpOptions {
  SessionOptions session;
  bool json = false;
  std::string bytesFolder;  ///< as NarrowFileName gives it; empty for none
};

/// Throws HostError.
void RunDump(const DumpOptions& options);

}  // namespace tarvex::host
