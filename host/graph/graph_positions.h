// Where a graph plays: reading and setting it through the graph's IMediaSeeking, in 100 ns units. Owned
// by the player, main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "framework/com_ptr.h"

namespace tarvex::host {

class GraphPositions {
 public:
  /// After the streams are rendered. `file` is what errors call the file.
  GraphPositions(IGraphBuilder* graph, std::string file);

  /// By the graph's clock.
  std::optional<std::int64_t> Current() const;
  /// As the file says it.
  std::optional<std::int64_t> Duration() const;

  /// The end of what is played, from the next seek on.
  void SetStop(std::int64_t stop) { m_stop = stop; }
  /// Plays from `start`, at once if the graph is running. Beyond the end means the end. Throws HostError.
  void Seek(std::int64_t start);

 private:
  const ComPtr<IMediaSeeking> m_seeking;  // null when nothing in the graph seeks
  const std::string m_file;
  std::optional<std::int64_t> m_stop;
};

}  // namespace tarvex::host
