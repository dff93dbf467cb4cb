// A worker thread with a request channel.
#include "framework/am_thread.h"

#include <utility>

#include "framework/com_boundary.h"

namespace tarvex {

namespace {
constexpr auto kNoReply = static_cast<DWORD>(E_UNEXPECTED);
}

CAMThread::CAMThread() = default;

CAMThread::~CAMThread() = default;

HRESULT CAMThread::CreateWithResult() {
  const CAutoLock access(m_AccessLock);
  const CAutoLock hold(m_channelLock);
  if (m_thread) return S_FALSE;
  m_pending = false;
  m_running = true;
  const HRESULT hr = m_thread.Start([this] { RunThread(); });
  if (FAILED(hr)) m_running = false;
  return hr;
}

bool CAMThread::Create() { return CreateWithResult() == S_OK; }

void CAMThread::RunThread() noexcept {
  static_cast<void>(ComBoundary([&] {
    ThreadProc();
    return S_OK;
  }));
  const CAutoLock hold(m_channelLock);
  m_running = false;
  m_changed.WakeAll();
}

bool CAMThread::IsWorker() const {
  const CAutoLock hold(m_channelLock);
  return m_thread.IsCurrent();
}

DWORD CAMThread::CallWorker(DWORD command) {
  // Before the access lock: its holder may be waiting for this very thread's reply.
  if (IsWorker()) return kNoReply;
  const CAutoLock access(m_AccessLock);
  const CAutoLock hold(m_channelLock);
  if (!m_thread || !m_running) return kNoReply;
  m_command = command;
  m_pending = true;
  m_changed.WakeAll();
  m_changed.WaitUntil(m_channelLock, INFINITE, [this] { return !m_pending || !m_running; });
  return m_pending.exchange(false) ? kNoReply : m_reply;
}

void CAMThread::Close() { TakeThread().Join(); }

Thread CAMThread::TakeThread() {
  const CAutoLock hold(m_channelLock);
  return std::move(m_thread);
}

bool CAMThread::ThreadExists() const {
  const CAutoLock hold(m_channelLock);
  return static_cast<bool>(m_thread);
}

DWORD CAMThread::GetRequest() {
  const CAutoLock hold(m_channelLock);
  m_changed.WaitUntil(m_channelLock, INFINITE, [this] { return m_pending.load(); });
  return m_command;
}

bool CAMThread::CheckRequest(DWORD* command) {
  if (!m_pending) return false;  // called for every block, so it must be cheap
  const CAutoLock hold(m_channelLock);
  if (m_pending && command != nullptr) *command = m_command;
  return m_pending;
}

void CAMThread::Reply(DWORD result) {
  const CAutoLock hold(m_channelLock);
  m_reply = result;
  m_pending = false;
  m_changed.WakeAll();
}

}  // namespace tarvex
