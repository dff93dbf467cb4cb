// The debug check of the lock order in framework/lock_rank.h. Called by locks and condition variables on the
// locking thread; empty in builds without TARVEX_DEBUG_CHECKS.
#pragma once

namespace tarvex {

class CCritSec;

#ifdef TARVEX_DEBUG_CHECKS
/// Before the lock is taken. Ends the process, with both names on stderr, when the thread does not hold it yet
/// but one that stands at its place or behind.
void CheckLockOrder(const CCritSec& lock) noexcept;
/// Before a wait that gives the lock up. Ends the process when the thread holds it more than once, which the
/// wait would not undo, or holds another one that is for a moment only.
void CheckMayWait(const CCritSec& lock) noexcept;
void NoteLocked(const CCritSec& lock) noexcept;
void NoteUnlocked(const CCritSec& lock) noexcept;
#else
inline void CheckLockOrder(const CCritSec&) noexcept {}
inline void CheckMayWait(const CCritSec&) noexcept {}
inline void NoteLocked(const CCritSec&) noexcept {}
inline void NoteUnlocked(const CCritSec&) noexcept {}
#endif

}  // namespace tarvex
