// See heap_count.h. The linker leads malloc and its like here (--wrap).
#include "tests/damage/heap_count.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

extern "C" {
void* __real_malloc(std::size_t size);                 // NOLINT(bugprone-reserved-identifier): the linker's name
void* __real_calloc(std::size_t count, std::size_t);   // NOLINT(bugprone-reserved-identifier)
void* __real_realloc(void* memory, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void __real_free(void* memory);                        // NOLINT(bugprone-reserved-identifier)
void* __wrap_malloc(std::size_t size);                 // NOLINT(bugprone-reserved-identifier)
void* __wrap_calloc(std::size_t count, std::size_t);   // NOLINT(bugprone-reserved-identifier)
void* __wrap_realloc(void* memory, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void __wrap_free(void* memory);                        // NOLINT(bugprone-reserved-identifier)
}

namespace {

thread_local std::int64_t t_held = 0;
thread_local std::int64_t t_peak = 0;
thread_local std::uint64_t t_allocations = 0;
thread_local bool t_counts = true;
std::atomic<std::uint64_t> g_allocations{0};
std::atomic<std::int64_t> g_held{0};
std::atomic<std::int64_t> g_peak{0};

std::int64_t Hold(std::int64_t size) noexcept {
  t_held += size;
  return g_held += size;
}

void* Counted(void* memory) noexcept {
  if (!t_counts) return memory;
  ++t_allocations;
  ++g_allocations;
  const std::int64_t held = Hold(static_cast<std::int64_t>(malloc_usable_size(memory)));
  t_peak = std::max(t_peak, t_held);
  for (std::int64_t peak = g_peak; held > peak && !g_peak.compare_exchange_weak(peak, held);) continue;
  return memory;
}

void Uncount(void* memory) noexcept {
  if (t_counts) Hold(-static_cast<std::int64_t>(malloc_usable_size(memory)));
}

}  // namespace

void* __wrap_malloc(std::size_t size) { return Counted(__real_malloc(size)); }
void* __wrap_calloc(std::size_t count, std::size_t size) { return Counted(__real_calloc(count, size)); }
void* __wrap_realloc(void* memory, std::size_t size) {
  Uncount(memory);
  void* moved = __real_realloc(memory, size);
  Counted(moved == nullptr ? memory : moved);
  return moved;
}
void __wrap_free(void* memory) {
  Uncount(memory);
  __real_free(memory);
}

void* operator new(std::size_t size) {
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto unit = static_cast<std::size_t>(alignment);
  void* memory = std::aligned_alloc(unit, (size + unit - 1) / unit * unit);
  if (memory == nullptr) throw std::bad_alloc();
  return Counted(memory);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept { std::free(memory); }

namespace tarvex::test {

NoHeapCount::NoHeapCount() noexcept { t_counts = false; }
NoHeapCount::~NoHeapCount() { t_counts = true; }
HeapCount::HeapCount() noexcept : m_start(t_held), m_firstAllocation(t_allocations) { t_peak = t_held; }
std::int64_t HeapCount::Peak() const noexcept { return t_peak - m_start; }
std::int64_t HeapCount::Now() const noexcept { return t_held - m_start; }
std::uint64_t HeapCount::OfAllThreads() noexcept { return g_allocations; }
WholeHeapCount::WholeHeapCount() noexcept : m_start(g_held) { g_peak = m_start; }
std::int64_t WholeHeapCount::Peak() const noexcept { return g_peak - m_start; }
std::uint64_t HeapCount::Allocations() const noexcept { return t_allocations - m_firstAllocation; }

}  // namespace tarvex::test
