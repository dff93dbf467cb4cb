// The one limit of all timed waits, and the wait itself. Free functions; any thread.
#pragma once

#include "framework/thread.h"

namespace tarvex::test {

/// Longest that a test waits for what must happen, on however slow and busy a machine.
inline constexpr DWORD kPatience = 20000;  // milliseconds

/// Asks until the answer is yes; false when it never was.
template <class Condition>
bool Eventually(Condition isTrue) {
  for (DWORD waited = 0; waited < kPatience; ++waited) {
    if (isTrue()) return true;  // asking may have an effect, so it ends here
    SleepMilliseconds(1);
  }
  return isTrue();
}

}  // namespace tarvex::test
