// Counts the heap allocations of the calling thread, for tests of what must not allocate.
#pragma once

#include <cstddef>

namespace tarvex::test {

/// Allocations by operator new on this thread since it began.
std::size_t AllocationsOfThisThread() noexcept;

}  // namespace tarvex::test
