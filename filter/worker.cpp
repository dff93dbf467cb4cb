// The worker's commands, on controlling threads, and its thread.
#include "filter/worker.h"

#include "framework/log.h"

namespace tarvex {

/// Makes sure that the worker comes to its next command: from construction to destruction a read that it
/// is blocked in, and a wait for room in a pin's ring, fail at once. The control lock must be held and a
/// worker exist.
class Worker::WaitsCancelled {
 public:
  explicit WaitsCancelled(Worker& worker) : m_worker(worker) {
    m_worker.m_commandComing = true;
    m_worker.m_source.BeginFlush();
    m_worker.m_pins.CancelWaits(true);
  }
  ~WaitsCancelled() {
    m_worker.m_pins.CancelWaits(false);
    m_worker.m_source.EndFlush();
    m_worker.m_commandComing = false;
  }
  WaitsCancelled(const WaitsCancelled&) = delete;
  WaitsCancelled& operator=(const WaitsCancelled&) = delete;

 private:
  Worker& m_worker;
};

Worker::Worker(CBaseFilter& filter, Source& source, const OutputPins& pins, PlayPositions& positions)
    : m_filter(filter), m_source(source), m_pins(pins), m_positions(positions), m_pass(source, pins, positions, [this] {
        return IsCommandPending();
      }) {}

HRESULT Worker::Start() {
  const CAutoLock lock(m_AccessLock);
  if (!ThreadExists() && !Create()) return E_FAIL;
  return SendStart();
}

HRESULT Worker::SendStart() {
  if (m_runState == kStart) return S_OK;
  m_runState = kStart;
  m_pass.Announce();
  return static_cast<HRESULT>(CallWorker(kStart));
}

HRESULT Worker::Pause() {
  const CAutoLock lock(m_AccessLock);
  if (!ThreadExists()) return E_UNEXPECTED;
  const WaitsCancelled cancelled(*this);
  m_runState = kPause;
  return static_cast<HRESULT>(CallWorker(kPause));
}

HRESULT Worker::End() {
  // Held while the thread ends as well: until then no other may be made. The worker takes no such lock.
  const CAutoLock lock(m_AccessLock);
  if (!ThreadExists()) return S_FALSE;
  {
    const WaitsCancelled cancelled(*this);
    m_runState = kExit;
    CallWorker(kExit);
  }
  TakeThread().Join();
  return S_OK;
}

bool Worker::Interrupt() {
  // A worker that is being ended may still be in its pass, which would choose a start in the range that comes next.
  if (m_runState == kExit && !IsCurrent()) {
    const CAutoLock ended(m_AccessLock);
  }
  if (m_runState != kStart) return false;
  m_pins.BeginFlush();
  const bool paused = !IsCurrent() && Pause() == S_OK;
  m_pins.EndFlush();
  return paused;
}

void Worker::Resume() {
  // A stop may have ended the worker since it was interrupted; then it must stay ended.
  const CAutoLock lock(m_AccessLock);
  if (ThreadExists() && m_runState == kPause) SendStart();
}

// Reads wait too, and those of other threads come while nothing is delivered.
void Worker::BeforeWait() {
  if (IsCurrent()) m_pins.BeforeWait();
}

DWORD Worker::ThreadProc() {
  m_threadId = CurrentThreadId();
  for (;;) {
    switch (GetRequest()) {
      case kPause:
        LogText("CMatroskaSplitter::ThreadProc tm_pause");
        Reply(0);
        break;
      case kStart:
        LogText("CMatroskaSplitter::ThreadProc tm_start");
        Reply(0);  // the controller is not kept while frames are delivered
        RunPass();
        LogText("CMatroskaSplitter::ThreadProc Process exit");
        break;
      case kExit:
        LogText("CMatroskaSplitter::ThreadProc tm_exit");
        m_threadId = 0;
        Reply(0);
        return 0;
      default:
        break;  // nothing else is ever sent
    }
  }
}

void Worker::RunPass() {
  if (const HRESULT result = m_pass.Run(); FAILED(result)) ReportFailedPass(result);
  m_pass.Finish();
}

// The locks are for the case in which nobody delivers, and so nobody waits for a read that this may be said in. Who
// gives a command waits for such a read, but what ends for a command is no longer played.
void Worker::EndPass() {
  if (m_pass.EndEarly() || m_commandComing) return;
  const CAutoLock position(m_positions.PositionLock());
  const CAutoLock control(m_AccessLock);  // no pass begins meanwhile
  if (m_pass.IsInProgress()) return;      // of what is played now
  m_pins.DropHeld();
  m_pins.EndOfStream();
}

bool Worker::IsCommandPending() {
  DWORD command = 0;
  if (!CheckRequest(&command)) return false;
  LogFormat("CMatroskaSplitter::ProcessEvents event occured %d", static_cast<int>(command));
  return true;
}

// Nobody else knows that no end of stream will come, and the graph would wait for it. A graph only notes an event
// and does not call back, so the worker can tell it.
void Worker::ReportFailedPass(HRESULT result) {
  // A controller that wants the worker makes its reads fail before it sends the command.
  if (m_commandComing || CheckRequest(nullptr)) return;
  m_filter.NotifyEvent(EC_ERRORABORT, result, 0);
}

}  // namespace tarvex
