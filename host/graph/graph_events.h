// Waiting for what a running graph reports. Owned by a command, used on the main thread, which keeps
// handling window messages meanwhile.
#pragma once

#include "framework/com_ptr.h"
#include "host/system/interrupt.h"

namespace tarvex::host {

/// Why a wait ended.
enum class GraphEnd {
  kNone,         ///< the time is up or somebody wants attention; the graph goes on
  kComplete,     ///< every renderer has reached the end
  kAborted,      ///< a filter gave up; Error() says with which code
  kClosed,       ///< the user closed the picture's window
  kInterrupted,  ///< Ctrl-C
  kQuit,         ///< the user pressed q; the player answers it, never Wait
};

class GraphEvents {
 public:
  /// Throws HostError when the graph has no events.
  explicit GraphEvents(IGraphBuilder* graph);

  /// Waits for an end: at most `milliseconds` (or INFINITE), and not beyond the moment when `attention`, if there is
  /// one, is set.
  GraphEnd Wait(DWORD milliseconds, HANDLE attention = nullptr);

  /// The code of the last kAborted.
  HRESULT Error() const noexcept { return m_error; }

 private:
  GraphEnd TakeEvents();

  ComPtr<IMediaEventEx> m_events;
  HANDLE m_signal = nullptr;  // the graph's, not ours to close
  Interrupt m_interrupt;
  HRESULT m_error = S_OK;
};

}  // namespace tarvex::host
