// A thread of ours: started with a function, joined or abandoned by its owner.
#pragma once

#include <functional>
#include <memory>

#include "framework/platform/platform.h"

namespace tarvex {

/// Identifier of the calling thread, unique among the living threads of the process.
DWORD CurrentThreadId() noexcept;

/// Gives up the processor for about this long. For tests and back-off only.
void SleepMilliseconds(DWORD milliseconds) noexcept;

/// Owns one running thread, or none. Movable, so that an owner can take a thread out of a member and
/// wait for it without holding a lock. Every thread is in COM's multithreaded apartment as long as its function runs
/// and what that owns lives. It keeps its module loaded until it has ended, so an abandoned one may outlive its owner
/// as long as its function owns all it touches. What the function throws is logged and ends the thread. Destroying a
/// Thread that still owns a thread joins it.
class Thread {
 public:
  using Function = std::function<void()>;

  Thread() noexcept;
  ~Thread();
  Thread(Thread&& other) noexcept;
  Thread& operator=(Thread&& other) noexcept;
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  /// E_UNEXPECTED when there is a thread already; the system's code when none can be created.
  HRESULT Start(Function function, int priority = THREAD_PRIORITY_NORMAL) noexcept;

  /// There is a thread to be joined; it may have ended.
  explicit operator bool() const noexcept { return m_native != nullptr; }

  /// True on the thread itself.
  bool IsCurrent() const noexcept;

  /// Waits without limit. Not to be called on the thread itself.
  void Join() noexcept;

  /// Joins if the thread ends in time.
  bool JoinFor(DWORD milliseconds) noexcept;

  /// Lets the thread run on by itself.
  void Abandon() noexcept;

 private:
  struct Native;
  std::unique_ptr<Native> m_native;
};

}  // namespace tarvex
