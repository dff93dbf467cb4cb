// The debug check of the lock order in framework/lock_rank.h. Called by locks and condition variables on the
// locking thread; empty in builds without TARVEX_DEBUG_CHECKS.
#pragma once

namespace tarvex {

class CCritSec;

#ifdef TARVEX_DEBUG_CHECKS
/// Called before the lock is taken. Ends the process, with both names on stderr, when the thread holds another lock of
/// the same or a later rank. A lock that it holds already may be taken again.
void CheckLockOrder(const CCritSec& lock) noexcept;
/// Called before a wait that gives the lock up. Ends the process when the thread holds it more than once, which the
/// wait would not undo, or holds another lock that is for a moment only.
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
