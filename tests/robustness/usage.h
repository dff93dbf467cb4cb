// What this process uses of the system, and the check that it gave back what it took. Values and a free
// function; one thread.
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/test_system.h"

namespace tarvex::test {

struct Usage {
  std::uint32_t handles = OpenHandles();
  std::uint32_t threads = LivingThreads();
  std::uint64_t memory = MemoryInUse();  ///< bytes
  std::uint64_t heap = HeapInUse();      ///< bytes
};

/// In words.
std::string Describe(const Usage& usage);

/// Handles, threads and memory are back where they were, or are within a second: a thread that was let go may
/// still be on its way out. Memory is not looked at in instrumented builds, which keep what is freed.
void ExpectBackAt(const Usage& before);
/// The same as an answer.
bool ComesBackTo(const Usage& before);

/// How many rounds a test makes: all of them where users' builds are tested or TARVEX_LONG=1 asks for
/// it, fewer elsewhere.
int Rounds(int full, int quick);

}  // namespace tarvex::test
