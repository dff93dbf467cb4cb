// The switch of the faults that tools/faults/run plants in a copy of the tree. TARVEX_PLANTED names the one
// that is on. TARVEX_PLANTED_REACHED names a file with one byte for each, set when its place is reached.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>

namespace planted {

inline constexpr std::size_t kMost = 1 << 16;

inline unsigned char* OpenReached() noexcept {
  const char* name = std::getenv("TARVEX_PLANTED_REACHED");
  if (name == nullptr) return nullptr;
  void* map = mmap(nullptr, kMost, PROT_READ | PROT_WRITE, MAP_SHARED, open(name, O_RDWR | O_CLOEXEC), 0);
  if (map == MAP_FAILED) std::abort();
  return static_cast<unsigned char*>(map);
}

inline unsigned char* const g_reached = OpenReached();
inline const char* const g_chosen = std::getenv("TARVEX_PLANTED");
inline const long g_fault = g_chosen == nullptr ? -1 : std::atol(g_chosen);

inline bool On(long fault) noexcept {
  if (g_reached != nullptr) g_reached[fault] = 1;
  return fault == g_fault;
}

// Stands between an operator and its right side, `a < Less<7>{} < b`, so that nobody has to know where the
// operands begin and end.
#define PLANTED_OPERATOR(Name, right, wrong)                                 \
  template <long Fault>                                                      \
  struct Name {};                                                            \
  template <class Left, long Fault>                                          \
  struct Name##Left {                                                        \
    const Left& left;                                                        \
  };                                                                         \
  template <class Left, long Fault>                                          \
  Name##Left<Left, Fault> operator right(const Left& left, Name<Fault>) {    \
    return {left};                                                           \
  }                                                                          \
  template <class Left, long Fault, class Right>                             \
  auto operator right(const Name##Left<Left, Fault>& held, const Right& b) { \
    return On(Fault) ? held.left wrong b : held.left right b;                \
  }
PLANTED_OPERATOR(Less, <, <=)
PLANTED_OPERATOR(LessEqual, <=, <)
PLANTED_OPERATOR(Greater, >, >=)
PLANTED_OPERATOR(GreaterEqual, >=, >)
PLANTED_OPERATOR(Equal, ==, !=)
PLANTED_OPERATOR(NotEqual, !=, ==)
PLANTED_OPERATOR(Plus, +, -)
PLANTED_OPERATOR(Minus, -, +)
PLANTED_OPERATOR(Times, *, +)
PLANTED_OPERATOR(Over, /, *)
#undef PLANTED_OPERATOR

}  // namespace planted
