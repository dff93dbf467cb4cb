// A worker thread with a request channel: a controller posts a command number and waits for the reply.
// The base of a class that has one worker; controllers are application threads.
#pragma once

#include <atomic>

#include "framework/condition_variable.h"
#include "framework/critical_section.h"
#include "framework/thread.h"

namespace tarvex {

/// Waits here, and what ends each: GetRequest for a command (CallWorker; the owner ends the thread by a
/// command of its own); CallWorker for the reply (Reply, or the end of the thread); Close and joining for
/// the end of the thread.
///
/// The destructor of the derived class must have ended the thread: by then ThreadProc is gone.
class CAMThread {
 public:
  CAMThread();
  virtual ~CAMThread();
  CAMThread(const CAMThread&) = delete;
  CAMThread& operator=(const CAMThread&) = delete;

  /// Starts the thread; false when there is one or none can be made.
  bool Create();
  /// Create with the reason: S_OK, S_FALSE when there is a thread already, or the system's code.
  HRESULT CreateWithResult();

  /// Posts a command and waits for the reply. E_UNEXPECTED (as a DWORD) without a thread, on the worker
  /// itself, or when the thread ends without replying.
  DWORD CallWorker(DWORD command);

  /// Waits for the thread to end; the derived class must have told it to.
  void Close();
  /// Takes the thread out, so that it can be joined without the access lock; ThreadExists is false then.
  Thread TakeThread();
  bool ThreadExists() const;

  /// Held by controllers around a decision and the command that follows from it. Taken after the
  /// position lock.
  CCritSec m_AccessLock{"CAMThread access", LockRank::kWorkerControl};

 protected:
  /// The worker. Runs on the new thread; what it throws is logged and ends the thread.
  virtual DWORD ThreadProc() = 0;

  // For ThreadProc.
  /// Waits for a command and gives it; it stays pending until Reply.
  DWORD GetRequest();
  /// A command is pending; stores it. Does not take it.
  bool CheckRequest(DWORD* command);
  /// Answers the pending command and so lets CallWorker return.
  void Reply(DWORD result);

 private:
  void RunThread() noexcept;
  bool IsWorker() const;

  mutable CCritSec m_channelLock{"CAMThread channel", LockRank::kLeaf};
  ConditionVariable m_changed;  // a request, a reply, or the end of the thread
  Thread m_thread;              // under m_channelLock
  DWORD m_command = 0;
  DWORD m_reply = 0;
  std::atomic<bool> m_pending{false};  // written under m_channelLock
  bool m_running = false;              // the thread can still reply
};

}  // namespace tarvex
