// Locks, condition variables and threads over the C++ library's, which the sanitizers understand.
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include "framework/com_boundary.h"
#include "framework/condition_variable.h"
#include "framework/critical_section.h"
#include "framework/event.h"
#include "framework/platform/lock_order.h"
#include "framework/thread.h"
#include "framework/thread_apartment.h"

namespace tarvex {

struct CCritSec::Native {
  std::recursive_mutex mutex;
};

CCritSec::CCritSec(const char* name, LockRank rank) : m_label(name, rank) {
  static_assert(sizeof(Native) <= kNativeSize);
  new (m_system) Native;
}

CCritSec::~CCritSec() { System().~Native(); }

void CCritSec::Lock() noexcept {
  CheckLockOrder(*this);
  System().mutex.lock();
  NoteLocked(*this);
}

void CCritSec::Unlock() noexcept {
  NoteUnlocked(*this);
  System().mutex.unlock();
}

struct ConditionVariable::Native {
  std::condition_variable_any condition;
};

ConditionVariable::ConditionVariable() {
  static_assert(sizeof(Native) <= kNativeSize);
  new (m_system) Native;
}

ConditionVariable::~ConditionVariable() { System().~Native(); }

bool ConditionVariable::Wait(CCritSec& lock, DWORD milliseconds) noexcept {
  CheckMayWait(lock);
  auto& mutex = lock.System().mutex;
  if (milliseconds == INFINITE) {
    System().condition.wait(mutex);
    return true;
  }
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  return System().condition.wait_until(mutex, end) == std::cv_status::no_timeout;
}

void ConditionVariable::WakeOne() noexcept { System().condition.notify_one(); }

void ConditionVariable::WakeAll() noexcept { System().condition.notify_all(); }

ULONGLONG MonotonicMilliseconds() noexcept {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<ULONGLONG>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

DWORD CurrentThreadId() noexcept {
  thread_local const auto id = static_cast<DWORD>(::gettid());
  return id;
}

void SleepMilliseconds(DWORD milliseconds) noexcept {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

struct Thread::Native {
  std::thread thread;
  // Shared with the thread, which may be left behind.
  std::shared_ptr<Event> ended = std::make_shared<Event>(Event::Mode::kManual);
};

namespace {

// Destroys what the function owns, then leaves the apartment, and only then reports the end.
void RunInApartment(Thread::Function& function) noexcept {
  const ThreadApartment apartment;
  static_cast<void>(ComBoundary([&] {
    function();
    return S_OK;
  }));
  function = nullptr;
}

}  // namespace

Thread::Thread() noexcept = default;
Thread::~Thread() { Join(); }
Thread::Thread(Thread&& other) noexcept = default;

Thread& Thread::operator=(Thread&& other) noexcept {
  Join();
  m_native = std::move(other.m_native);
  return *this;
}

HRESULT Thread::Start(Function function, int /*priority*/) noexcept {
  if (m_native) return E_UNEXPECTED;
  return ComBoundary([&] {
    auto native = std::make_unique<Native>();
    try {
      native->thread = std::thread([body = std::move(function), ended = native->ended]() mutable {
        RunInApartment(body);
        ended->Set();
      });
    } catch (const std::system_error&) {
      return E_OUTOFMEMORY;
    }
    m_native = std::move(native);
    return S_OK;
  });
}

bool Thread::IsCurrent() const noexcept { return m_native && m_native->thread.get_id() == std::this_thread::get_id(); }

void Thread::Join() noexcept {
  if (!m_native) return;
  m_native->thread.join();
  m_native.reset();
}

bool Thread::JoinFor(DWORD milliseconds) noexcept {
  if (m_native && !m_native->ended->Wait(milliseconds)) return false;
  Join();
  return true;
}

void Thread::Abandon() noexcept {
  if (!m_native) return;
  m_native->thread.detach();
  m_native.reset();
}

}  // namespace tarvex
