// A flag that threads wait for.
#include "framework/event.h"

namespace tarvex {

void Event::Set() noexcept {
  const CAutoLock hold(m_lock);
  m_set = true;
  if (m_waiters == 0) return;
  if (m_manual) {
    m_changed.WakeAll();
  } else {
    m_changed.WakeOne();
  }
}

void Event::Clear() noexcept {
  const CAutoLock hold(m_lock);
  m_set = false;
}

bool Event::Wait(DWORD milliseconds) noexcept {
  const CAutoLock hold(m_lock);
  ++m_waiters;
  const bool set = m_changed.WaitUntil(m_lock, milliseconds, [this] { return m_set; });
  --m_waiters;
  if (set && !m_manual) m_set = false;
  return set;
}

}  // namespace tarvex
