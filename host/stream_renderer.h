// Puts the platform's decoders and renderers behind the splitter's pins where there are any, and a counting
// sink where not. Used by the play command on the main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/graph_session.h"
#include "host/stream_counter.h"

namespace tarvex::host {

struct RenderedStream {
  std::string pin;
  GUID majorType{};
  std::string mediaType;  ///< on one line
  std::string renderer;   ///< the filters it goes through; empty for a counting sink
  std::shared_ptr<CStreamCounter> counter;
};

/// Renders every output pin. Throws HostError when a pin takes not even the sink.
std::vector<RenderedStream> RenderStreams(CGraphSession& session);

}  // namespace tarvex::host
