// The graph around the filter while one of its pins is made to carry another stream: stops it, takes away
// what is downstream of the pin, renders it again and brings state and positions back. A value on the stack
// of the application's thread that asked; no lock of the filter may be held around its calls, since the
// graph has its own and calls the filter under it.
#pragma once

#include <vector>

#include "framework/com_ptr.h"

namespace tarvex {

/// Waits here are limited, because a graph may never come to what is waited for: a paused one does not
/// complete, and one without data does not finish its change of state.
class RenderedGraph {
 public:
  /// VFW_E_NOT_IN_GRAPH without a graph, or what it answers when it cannot be controlled.
  HRESULT Attach(const ComPtr<IFilterGraph>& graph);

  /// Remembers positions and state, for Restore.
  void Save();
  bool WasStopped() const noexcept { return m_state == State_Stopped; }

  /// Waits until a running graph has taken the end of stream that was delivered, then stops it.
  void Stop();

  /// Finds every filter fed by `pin`, directly or through others. `owner` is the pin's own filter. Throws
  /// std::bad_alloc.
  void FindDownstream(IPin* pin, IBaseFilter* owner);
  /// Removes what was found, with all its connections. Throws std::bad_alloc.
  void RemoveDownstream();

  /// Disconnected pins are rendered, connected ones left alone.
  HRESULT Render(IPin* pin);

  /// Brings back what Save remembered, unless the graph was stopped then. What the graph says of its state.
  HRESULT Restore() noexcept;

 private:
  void SavePositions();
  void DisconnectAll(IBaseFilter* filter);

  ComPtr<IGraphBuilder> m_builder;
  ComPtr<IMediaControl> m_control;
  ComPtr<IMediaSeeking> m_seeking;  // null when the graph cannot seek
  std::vector<ComPtr<IBaseFilter>> m_downstream;
  OAFilterState m_state = State_Stopped;
  LONGLONG m_current = 0;  // 100 ns units, as the graph gives them
  LONGLONG m_stop = 0;
  bool m_hasPositions = false;
};

}  // namespace tarvex
