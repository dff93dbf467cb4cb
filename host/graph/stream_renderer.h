// Puts the platform's decoders and renderers behind the splitter's pins where there are any, and a counting
// sink where not. Used by the play command on the main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/graph/graph_session.h"
#include "host/graph/sink_filter.h"
#include "host/graph/stream_counter.h"

namespace tarvex::host {

struct RenderedStream {
  ComPtr<IPin> output;
  std::string pin;
  std::string name;  ///< of the stream that it carries, as the splitter lists it
  GUID majorType{};
  std::string mediaType;  ///< on one line
  std::string renderer;   ///< the filters it goes through; empty for a counting sink
  std::string reason;     ///< why nothing rendered it the last time that this was tried; empty otherwise
  std::shared_ptr<StreamCounter> counter;
};

/// Renders every output pin. Throws HostError when a pin takes not even the sink.
std::vector<RenderedStream> RenderStreams(GraphSession& session, SinkSeeking seeking);

/// Renders one pin, which is not connected. Its counter goes on. Throws like RenderStreams.
void RenderStream(GraphSession& session, RenderedStream& stream, SinkSeeking seeking);

/// Reads anew what the pin carries and where that goes, after others have connected it.
void DescribeStream(const GraphSession& session, RenderedStream& stream);

}  // namespace tarvex::host
