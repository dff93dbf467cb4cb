// The lock of this code base and its scoped holder. A lock belongs to the object it is declared in;
// any thread may take it, and the thread that holds it may take it again.
#pragma once

#include <memory>

#include "framework/lock_rank.h"
#include "framework/platform/platform.h"

namespace tarvex {

class ConditionVariable;

/// A recursive lock. In builds with TARVEX_DEBUG_CHECKS taking locks out of order ends the process with
/// the two names on stderr.
class CCritSec {
 public:
  CCritSec(const char* name, LockRank rank);
  ~CCritSec();
  CCritSec(const CCritSec&) = delete;
  CCritSec& operator=(const CCritSec&) = delete;

  void Lock() noexcept;
  void Unlock() noexcept;

  const LockLabel& Label() const noexcept { return m_label; }

 private:
  friend class ConditionVariable;
  struct Native;

  // Room for the system's lock in place: a lock must not cost a heap allocation per object.
  static constexpr std::size_t kNativeSize = 64;
  Native& System() noexcept { return *reinterpret_cast<Native*>(m_system); }

  // Not the largest alignment there is: for 32-bit Windows that depends on the order of the headers.
  alignas(8) unsigned char m_system[kNativeSize];
  [[no_unique_address]] const LockLabel m_label;
};

/// Holds a lock from construction to destruction.
class [[nodiscard]] CAutoLock {
 public:
  explicit CAutoLock(CCritSec* lock) noexcept : m_lock(*lock) { m_lock.Lock(); }
  explicit CAutoLock(CCritSec& lock) noexcept : m_lock(lock) { m_lock.Lock(); }
  ~CAutoLock() { m_lock.Unlock(); }
  CAutoLock(const CAutoLock&) = delete;
  CAutoLock& operator=(const CAutoLock&) = delete;

 private:
  CCritSec& m_lock;
};

}  // namespace tarvex
