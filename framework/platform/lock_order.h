// The debug check of the lock order. Called by the lock itself on the locking thread; empty in builds
// without TARVEX_DEBUG_CHECKS.
#pragma once

namespace tarvex {

class CCritSec;

#ifdef TARVEX_DEBUG_CHECKS
/// Ends the process when the thread holds a lock of a higher rank than this one's and not this one too.
void CheckLockOrder(const CCritSec& lock) noexcept;
void NoteLocked(const CCritSec& lock) noexcept;
void NoteUnlocked(const CCritSec& lock) noexcept;
#else
inline void CheckLockOrder(const CCritSec&) noexcept {}
inline void NoteLocked(const CCritSec&) noexcept {}
inline void NoteUnlocked(const CCritSec&) noexcept {}
#endif

}  // namespace tarvex
