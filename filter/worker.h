// The streaming worker: a thread that is started, paused and ended by commands, and runs delivery passes in between. A
// part of the filter; controllers are application and queue threads.
#pragma once

#include <atomic>

#include "filter/delivery_pass.h"
#include "filter/output_pins.h"
#include "filter/source.h"
#include "framework/am_thread.h"
#include "framework/base_filter.h"
#include "pins/output/pass_control.h"

namespace tarvex {

/// The control lock (m_AccessLock of CAMThread) is held around a decision about the worker and the command that follows
/// from it, behind the filter lock and the position lock. The worker takes none of the three.
///
/// Waits here: a controller waits for the worker's reply or end. The worker waits for a read and for room in a pin's
/// ring, and WaitsCancelled ends both.
class Worker final : public PassControl, private CAMThread {
 public:
  /// All live as long as this. The filter passes on to the graph what ended a pass.
  Worker(CBaseFilter& filter, Source& source, const OutputPins& pins, PlayPositions& positions);

  /// Makes the thread if there is none, and sends it into a pass, unless that was the last command already. E_FAIL when
  /// no thread can be made. Position lock held, so that no seek is half done.
  HRESULT Start();
  /// Waits for the thread's end. S_FALSE when there is none. Not on the worker.
  HRESULT End();
  bool Exists() const { return ThreadExists(); }
  /// The calling thread is the worker.
  bool IsCurrent() const noexcept { return m_threadId == CurrentThreadId(); }

  // PassControl
  bool Interrupt() override;
  void Resume() override;
  void BeforeWait() override;

  /// The pass in progress comes to its end at the next block, as if the file ended there, and is not waited for. Where
  /// there is none, the pins are told, and drop what they hold. Any thread.
  void EndPass();

 private:
  /// The commands and, as the run state, the last one sent.
  enum Command : DWORD { kPause = 0, kStart = 1, kExit = 2 };
  class WaitsCancelled;

  // CAMThread
  DWORD ThreadProc() override;

  HRESULT Pause();
  HRESULT SendStart();
  void RunPass();
  bool IsCommandPending();
  void ReportFailedPass(HRESULT result);

  CBaseFilter& m_filter;
  Source& m_source;
  const OutputPins& m_pins;
  PlayPositions& m_positions;
  DeliveryPass m_pass;
  std::atomic<DWORD> m_runState{kPause};     // written under the control lock
  std::atomic<bool> m_commandComing{false};  // a failing read or a refused frame may be our own doing
  std::atomic<DWORD> m_threadId{0};
};

}  // namespace tarvex
