// The debug check of the lock order: each thread remembers the locks it holds.
#include "framework/platform/lock_order.h"

#ifdef TARVEX_DEBUG_CHECKS

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "framework/critical_section.h"

namespace tarvex {

namespace {

// Plain data, so that threads need no clean-up of ours.
struct HeldLocks {
  std::array<const CCritSec*, 64> locks;
  std::size_t count;

  std::span<const CCritSec* const> All() const { return {locks.data(), count}; }
};
thread_local HeldLocks t_held;

[[noreturn]] void EndWith(const CCritSec& lock, const char* how, const CCritSec& held) noexcept {
  std::fprintf(stderr, "lock order: \"%s\" %s \"%s\" is held\n", lock.Label().Name(), how, held.Label().Name());
  std::abort();
}

}  // namespace

void CheckLockOrder(const CCritSec& lock) noexcept {
  const auto all = t_held.All();
  if (std::find(all.begin(), all.end(), &lock) != all.end()) return;
  for (const CCritSec* held : all) {
    if (held->Label().Rank() >= lock.Label().Rank()) EndWith(lock, "taken while", *held);
  }
}

void CheckMayWait(const CCritSec& lock) noexcept {
  std::size_t times = 0;
  for (const CCritSec* held : t_held.All()) {
    if (held != &lock && held->Label().Rank() >= kFirstMomentary) EndWith(lock, "waited with while", *held);
    if (held == &lock && ++times > 1) EndWith(lock, "waited with while once more", *held);
  }
}

void NoteLocked(const CCritSec& lock) noexcept {
  if (t_held.count == t_held.locks.size()) EndWith(lock, "is one too many while", *t_held.locks.back());
  t_held.locks[t_held.count++] = &lock;
}

void NoteUnlocked(const CCritSec& lock) noexcept {
  const auto begin = t_held.locks.begin();
  auto end = begin + static_cast<std::ptrdiff_t>(t_held.count);
  for (auto place = end; place-- != begin;) {
    if (*place != &lock) continue;
    std::copy(place + 1, end, place);
    --t_held.count;
    return;
  }
}

}  // namespace tarvex

#endif
