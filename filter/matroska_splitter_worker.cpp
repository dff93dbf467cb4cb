// The streaming worker: the commands that control it (application threads) and its delivery passes.
#include <algorithm>

#include "filter/matroska_splitter.h"
#include "framework/com_boundary.h"
#include "framework/log.h"

namespace tarvex {

namespace {

// What the reader says of flushing is not the controller's affair: without a reader, or with one that
// fails, the worker is in no read either.
template <class Call>
void Try(Call&& call) noexcept {
  static_cast<void>(ComBoundary([&] {
    call();
    return S_OK;
  }));
}

}  // namespace

/// Makes sure that the worker comes to its next command: from construction to destruction a read that it
/// is blocked in, and a wait for room in a pin's ring, fail at once. The access lock must be held and a
/// worker exist.
class CMatroskaSplitter::WorkerWaitsCancelled {
 public:
  explicit WorkerWaitsCancelled(CMatroskaSplitter& filter) : m_filter(filter) {
    m_filter.m_commandComing = true;
    if (m_filter.m_reader) Try([this] { m_filter.m_scanner.BeginFlush(); });
    for (const auto& pin : m_filter.m_outputPins) pin->CancelWaits(true);
  }
  ~WorkerWaitsCancelled() {
    for (const auto& pin : m_filter.m_outputPins) pin->CancelWaits(false);
    if (m_filter.m_reader) Try([this] { m_filter.m_scanner.EndFlush(); });
    m_filter.m_commandComing = false;
  }
  WorkerWaitsCancelled(const WorkerWaitsCancelled&) = delete;
  WorkerWaitsCancelled& operator=(const WorkerWaitsCancelled&) = delete;

 private:
  CMatroskaSplitter& m_filter;
};

HRESULT CMatroskaSplitter::StartWorker() {
  const CAutoLock lock(m_AccessLock);
  if (!ThreadExists() && !Create()) return E_FAIL;
  return SendStart();
}

HRESULT CMatroskaSplitter::SendStart() {
  if (m_runState == kStart) return S_OK;
  m_runState = kStart;
  m_isPassing = true;
  return static_cast<HRESULT>(CallWorker(kStart));
}

HRESULT CMatroskaSplitter::PauseWorker() {
  const CAutoLock lock(m_AccessLock);
  if (!ThreadExists()) return E_UNEXPECTED;
  const WorkerWaitsCancelled cancelled(*this);
  m_runState = kPause;
  return static_cast<HRESULT>(CallWorker(kPause));
}

HRESULT CMatroskaSplitter::EndWorker() {
  // Held while the thread ends as well: until then no other may be made. The worker takes no such lock.
  const CAutoLock lock(m_AccessLock);
  if (!ThreadExists()) return S_FALSE;
  {
    const WorkerWaitsCancelled cancelled(*this);
    m_runState = kExit;
    CallWorker(kExit);
  }
  TakeThread().Join();
  return S_OK;
}

bool CMatroskaSplitter::Interrupt() {
  // A worker that is being ended may still be in its pass, which would choose a start in the range that comes next.
  if (m_runState == kExit && !IsWorkerThread()) {
    const CAutoLock ended(m_AccessLock);
  }
  if (m_runState != kStart) return false;
  BeginFlush();
  const bool paused = !IsWorkerThread() && PauseWorker() == S_OK;
  EndFlush();
  return paused;
}

void CMatroskaSplitter::Resume() {
  // A stop may have ended the worker since it was interrupted; then it must stay ended.
  const CAutoLock lock(m_AccessLock);
  if (ThreadExists() && m_runState == kPause) SendStart();
}

bool CMatroskaSplitter::IsWorkerThread() const { return m_workerId == CurrentThreadId(); }

DWORD CMatroskaSplitter::ThreadProc() {
  m_workerId = CurrentThreadId();
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
        EndPass();
        LogText("CMatroskaSplitter::ThreadProc Process exit");
        break;
      case kExit:
        LogText("CMatroskaSplitter::ThreadProc tm_exit");
        m_workerId = 0;
        Reply(0);
        return 0;
      default:
        break;  // nothing else is ever sent
    }
  }
}

// Reads wait too, and those of other threads come while nothing is delivered.
void CMatroskaSplitter::BeforeWait() {
  if (!IsWorkerThread()) return;
  for (const auto& pin : m_outputPins) pin->BeforeWait();
}

void CMatroskaSplitter::RunPass() {
  if (!AnyOutputConnected()) return;
  const HRESULT result = ComBoundary([this] {
    m_passFailure = S_OK;
    m_scanner.SetStartTime(static_cast<std::uint64_t>(m_positions.BeginRun()));
    // A pass that was interrupted, or that downstream refused, ends without end of stream.
    const bool interrupted = m_scanner.Process();
    BeforeWait();
    if (!interrupted) EndOfStream();
    return m_passFailure;
  });
  BeforeWait();
  if (FAILED(result)) ReportFailedPass(result);
}

// An end that upstream asked for is passed on here, unless a command makes it the end of what is no longer played.
void CMatroskaSplitter::EndPass() {
  m_isPassing = false;
  if (!m_endAsked.exchange(false) || CheckRequest(nullptr)) return;
  static_cast<void>(ComBoundary([this] { return EndOfStream(); }));
  BeforeWait();
}

// Nobody else knows that no end of stream will come, and the graph would wait for it. A graph only notes an event
// and does not call back, so the worker can tell it.
void CMatroskaSplitter::ReportFailedPass(HRESULT result) {
  // A controller that wants the worker makes its reads fail before it sends the command.
  if (m_commandComing || CheckRequest(nullptr)) return;
  NotifyEvent(EC_ERRORABORT, result, 0);
}

bool CMatroskaSplitter::ProcessEvents() {
  DWORD command = 0;
  if (m_endAsked) return true;
  if (!CheckRequest(&command)) return false;
  LogFormat("CMatroskaSplitter::ProcessEvents event occured %d", static_cast<int>(command));
  return true;
}

bool CMatroskaSplitter::OnData(const FrameInfo& frame) {
  CMatroskaOutputPin* pin = FindPinByTrack(frame.trackNumber);
  if (pin == nullptr || !pin->IsConnected()) return true;
  FrameInfo decoded = frame;
  m_scanner.Decode(decoded);
  return GiveFrame(*pin, decoded);
}

bool CMatroskaSplitter::OnLace(std::span<const FrameInfo> frames) {
  if (frames.empty()) return true;
  CMatroskaOutputPin* pin = FindPinByTrack(frames.front().trackNumber);
  if (pin == nullptr || !pin->IsConnected()) return true;
  if (m_scanner.IsCompressed(frames.front().trackNumber)) return CMatroskaCallback::OnLace(frames);
  pin->Reserve(frames);
  return std::ranges::all_of(frames, [&](const FrameInfo& frame) { return GiveFrame(*pin, frame); });
}

bool CMatroskaSplitter::GiveFrame(CMatroskaOutputPin& pin, const FrameInfo& frame) {
  if (pin.OnData(frame)) return true;
  m_passFailure = pin.OwnFailure();
  LogText("CMatroskaSplitter::OnData failed");
  return false;
}

}  // namespace tarvex
