// Choosing among the streams of one kind through the splitter's IAMStreamSelect, before and after the pins
// are connected. Owned by the player, main thread.
#pragma once

#include <string>
#include <vector>

#include "host/graph/graph_session.h"
#include "host/graph/stream_renderer.h"
#include "host/report/info_report.h"

namespace tarvex::host {

/// Chooses for pins that are not connected. `wish` as FindStream takes it. Throws
/// HostError with kUsage when the file has no such stream; "off" is fulfilled by a file without any.
void ChooseStream(GraphSession& session, std::uint32_t group, const std::string& wish);

class StreamSwitcher {
 public:
  StreamSwitcher(GraphSession& session, std::vector<RenderedStream>& streams, SinkSeeking seeking)
      : m_session(session), m_streams(streams), m_seeking(seeking) {}

  enum class Outcome {
    kDone,     ///< the graph goes on as before
    kStopped,  ///< it is stopped: the caller sets the position and state again
  };
  /// Has the connected pin of its kind carry stream `index`. Throws HostError.
  Outcome Switch(std::uint32_t index);

 private:
  RenderedStream& CarrierOf(std::uint32_t group) const;
  bool IsCarried(const RenderedStream& stream, std::uint32_t index) const;
  void EnableConnected(RenderedStream& stream, std::uint32_t index);
  void RenderAnew(RenderedStream& stream, std::uint32_t index);

  GraphSession& m_session;
  std::vector<RenderedStream>& m_streams;
  const SinkSeeking m_seeking;
};

}  // namespace tarvex::host
