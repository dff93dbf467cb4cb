// Waiting for a state that a CCritSec guards. Belongs to the object whose state is waited for; any
// thread may wait or wake.
#pragma once

#include <cstddef>

#include "framework/critical_section.h"

namespace tarvex {

class ConditionVariable {
 public:
  ConditionVariable();
  ~ConditionVariable();
  ConditionVariable(const ConditionVariable&) = delete;
  ConditionVariable& operator=(const ConditionVariable&) = delete;

  /// Gives `lock` up while waiting and holds it again on return. The calling thread must hold the lock
  /// exactly once. True when woken (perhaps for no reason), false when `milliseconds` have passed.
  bool Wait(CCritSec& lock, DWORD milliseconds = INFINITE) noexcept;

  /// Waits until `ready()` holds; it is called with the lock held. Answers its last result.
  template <class Predicate>
  bool WaitUntil(CCritSec& lock, DWORD milliseconds, Predicate ready);

  void WakeOne() noexcept;
  void WakeAll() noexcept;

 private:
  struct Native;
  static constexpr std::size_t kNativeSize = 96;
  Native& System() noexcept { return *reinterpret_cast<Native*>(m_system); }

  // Not the largest alignment there is: for 32-bit Windows that depends on the order of the headers.
  alignas(8) unsigned char m_system[kNativeSize];
};

/// Milliseconds of a clock that never goes back.
ULONGLONG MonotonicMilliseconds() noexcept;

template <class Predicate>
bool ConditionVariable::WaitUntil(CCritSec& lock, DWORD milliseconds, Predicate ready) {
  if (milliseconds == INFINITE) {
    while (!ready()) Wait(lock);
    return true;
  }
  const ULONGLONG end = MonotonicMilliseconds() + milliseconds;
  while (!ready()) {
    const ULONGLONG now = MonotonicMilliseconds();
    if (now >= end) return false;
    Wait(lock, static_cast<DWORD>(end - now));
  }
  return true;
}

}  // namespace tarvex
