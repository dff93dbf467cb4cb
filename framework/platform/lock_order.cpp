// The debug check of the lock order: each thread remembers the ranked locks it holds.
#include "framework/platform/lock_order.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "framework/critical_section.h"

namespace tarvex {

#ifdef TARVEX_DEBUG_CHECKS

namespace {

// Plain data, so that threads need no clean-up of ours. More locks than this are not remembered.
struct HeldLocks {
  std::array<const CCritSec*, 32> locks;
  std::size_t count;
};
thread_local HeldLocks t_held;

bool IsHeld(const CCritSec& lock) {
  const auto end = t_held.locks.begin() + static_cast<std::ptrdiff_t>(t_held.count);
  return std::find(t_held.locks.begin(), end, &lock) != end;
}

}  // namespace

void CheckLockOrder(const CCritSec& lock) noexcept {
  if (lock.Rank() == LockRank::kUnranked || IsHeld(lock)) return;
  for (std::size_t i = 0; i < t_held.count; ++i) {
    if (t_held.locks[i]->Rank() <= lock.Rank()) continue;
    std::fprintf(stderr, "lock order: \"%s\" taken while \"%s\" is held\n", lock.Name(), t_held.locks[i]->Name());
    std::abort();
  }
}

void NoteLocked(const CCritSec& lock) noexcept {
  if (lock.Rank() == LockRank::kUnranked || t_held.count == t_held.locks.size()) return;
  t_held.locks[t_held.count++] = &lock;
}

void NoteUnlocked(const CCritSec& lock) noexcept {
  for (std::size_t i = t_held.count; i-- > 0;) {
    if (t_held.locks[i] != &lock) continue;
    std::copy(t_held.locks.begin() + static_cast<std::ptrdiff_t>(i) + 1,
              t_held.locks.begin() + static_cast<std::ptrdiff_t>(t_held.count),
              t_held.locks.begin() + static_cast<std::ptrdiff_t>(i));
    --t_held.count;
    return;
  }
}

#endif

}  // namespace tarvex
