// Locks, condition variables and threads over Win32's: the fastest there is on Windows, and far faster
// than the C++ library's under Wine.
#include <new>

#include "framework/com_boundary.h"
#include "framework/condition_variable.h"
#include "framework/critical_section.h"
#include "framework/platform/lock_order.h"
#include "framework/thread.h"
#include "framework/thread_apartment.h"

namespace tarvex {

struct CCritSec::Native {
  CRITICAL_SECTION section;
};

CCritSec::CCritSec(const char* name, LockRank rank) : m_label(name, rank) {
  static_assert(sizeof(Native) <= kNativeSize);
  new (m_system) Native;
  InitializeCriticalSection(&System().section);
}

CCritSec::~CCritSec() { DeleteCriticalSection(&System().section); }

void CCritSec::Lock() noexcept {
  CheckLockOrder(*this);
  EnterCriticalSection(&System().section);
  NoteLocked(*this);
}

void CCritSec::Unlock() noexcept {
  NoteUnlocked(*this);
  LeaveCriticalSection(&System().section);
}

struct ConditionVariable::Native {
  CONDITION_VARIABLE condition;
};

ConditionVariable::ConditionVariable() {
  static_assert(sizeof(Native) <= kNativeSize);
  new (m_system) Native;
  InitializeConditionVariable(&System().condition);
}

ConditionVariable::~ConditionVariable() = default;

bool ConditionVariable::Wait(CCritSec& lock, DWORD milliseconds) noexcept {
  CheckMayWait(lock);
  return SleepConditionVariableCS(&System().condition, &lock.System().section, milliseconds) != FALSE;
}

void ConditionVariable::WakeOne() noexcept { WakeConditionVariable(&System().condition); }

void ConditionVariable::WakeAll() noexcept { WakeAllConditionVariable(&System().condition); }

ULONGLONG MonotonicMilliseconds() noexcept { return GetTickCount64(); }

DWORD CurrentThreadId() noexcept { return GetCurrentThreadId(); }

void SleepMilliseconds(DWORD milliseconds) noexcept { Sleep(milliseconds); }

struct Thread::Native {
  HANDLE handle = nullptr;
  DWORD id = 0;
  ~Native() {
    if (handle != nullptr) CloseHandle(handle);
  }
};

namespace {

struct ThreadStart {
  Thread::Function function;
  HMODULE module = nullptr;
};

// All objects of the thread are gone when this returns, the apartment last. The apartment must not end with the thread
// itself: a thread ends with the loader's lock held, and leaving the last apartment may unload modules.
HMODULE RunFunction(void* argument) noexcept {
  const ThreadApartment apartment;
  const std::unique_ptr<ThreadStart> start(static_cast<ThreadStart*>(argument));
  static_cast<void>(ComBoundary([&] {
    start->function();
    return S_OK;
  }));
  start->function = nullptr;
  return start->module;
}

DWORD WINAPI ThreadEntry(void* argument) noexcept {
  HMODULE module = RunFunction(argument);
  // Gives up the module and ends the thread in one system call: afterwards this code may be unloaded.
  if (module != nullptr) FreeLibraryAndExitThread(module, 0);
  return 0;
}

HMODULE HoldThisModule() noexcept {
  HMODULE module = nullptr;
  static const int anchor = 0;
  if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&anchor), &module)) {
    return nullptr;
  }
  return module;
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

HRESULT Thread::Start(Function function, int priority) noexcept {
  if (m_native) return E_UNEXPECTED;
  return ComBoundary([&] {
    auto native = std::make_unique<Native>();
    auto start = std::make_unique<ThreadStart>();
    start->function = std::move(function);
    start->module = HoldThisModule();
    native->handle = CreateThread(nullptr, 0, ThreadEntry, start.get(), CREATE_SUSPENDED, &native->id);
    if (native->handle == nullptr) {
      const HRESULT hr = HRESULT_FROM_WIN32(GetLastError());
      if (start->module != nullptr) FreeLibrary(start->module);
      return FAILED(hr) ? hr : E_OUTOFMEMORY;
    }
    static_cast<void>(start.release());
    if (priority != THREAD_PRIORITY_NORMAL) SetThreadPriority(native->handle, priority);
    ResumeThread(native->handle);
    m_native = std::move(native);
    return S_OK;
  });
}

bool Thread::IsCurrent() const noexcept { return m_native && m_native->id == GetCurrentThreadId(); }

void Thread::Join() noexcept {
  if (!m_native) return;
  WaitForSingleObject(m_native->handle, INFINITE);
  m_native.reset();
}

bool Thread::JoinFor(DWORD milliseconds) noexcept {
  if (m_native && WaitForSingleObject(m_native->handle, milliseconds) == WAIT_TIMEOUT) return false;
  m_native.reset();
  return true;
}

void Thread::Abandon() noexcept { m_native.reset(); }

}  // namespace tarvex
