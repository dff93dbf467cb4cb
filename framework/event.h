// A flag that threads wait for, resetting itself for one waiter or staying set. Belongs to the object
// that signals; any thread may set, reset or wait.
#pragma once

#include "framework/condition_variable.h"

namespace tarvex {

class Event {
 public:
  enum class Mode { kAuto, kManual };

  explicit Event(Mode mode = Mode::kAuto) : m_manual(mode == Mode::kManual) {}

  void Set() noexcept;
  void Clear() noexcept;

  /// True when the event was or became set in time; an automatic event is taken by that.
  bool Wait(DWORD milliseconds = INFINITE) noexcept;

 private:
  CCritSec m_lock{"Event", LockRank::kEvent};
  ConditionVariable m_changed;
  const bool m_manual;
  bool m_set = false;      // under m_lock
  unsigned m_waiters = 0;  // under m_lock; nobody is woken when nobody sleeps
};

}  // namespace tarvex
