// `mkvhost settings`: the splitter's property pages in the platform's property frame. Main thread.
#pragma once

#include "host/graph/graph_session.h"

namespace tarvex::host {

struct SettingsOptions {
  SessionOptions session;
};

/// Returns when the user closes the frame, and prints the settings that hold then. Throws HostError.
void RunSettings(const SettingsOptions& options);

}  // namespace tarvex::host
