// Replaces the global operator new of this program by one that counts.
#include "tests/pins_output/allocation_count.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t t_allocations = 0;

}  // namespace

namespace tarvex::test {

std::size_t AllocationsOfThisThread() noexcept { return t_allocations; }

}  // namespace tarvex::test

void* operator new(std::size_t size) {
  ++t_allocations;
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
