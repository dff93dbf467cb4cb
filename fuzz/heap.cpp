// See heap.h. Names that begin with __wrap_ are what the linker calls instead of the functions named behind it, and
// __real_ those functions.
#include "fuzz/heap.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* memory, std::size_t size);
void __real_free(void* memory);
}

namespace tarvex::fuzz {
namespace {

std::atomic<std::int64_t> g_held{0};
std::atomic<std::int64_t> g_peak{0};
std::atomic<std::uint64_t> g_allocations{0};

struct {
  std::atomic<bool> on{false};
  std::atomic<bool> met{false};
  std::atomic<FaultKind> kind{FaultKind::kNew};
  std::atomic<bool> lasting{false};
  std::atomic<std::int64_t> index{0};
  std::atomic<std::int64_t> calls{0};
} g_armed;
thread_local bool t_meets = true;

void* Counted(void* memory) noexcept {
  ++g_allocations;
  const std::int64_t held = g_held += static_cast<std::int64_t>(malloc_usable_size(memory));
  for (std::int64_t peak = g_peak; held > peak && !g_peak.compare_exchange_weak(peak, held);) continue;
  return memory;
}

void Uncount(void* memory) noexcept { g_held -= static_cast<std::int64_t>(malloc_usable_size(memory)); }

void Free(void* memory) noexcept {
  Uncount(memory);
  __real_free(memory);
}

void* New(std::size_t size) noexcept {
  return Fails(FaultKind::kNew) ? nullptr : Counted(__real_malloc(size == 0 ? 1 : size));
}

}  // namespace

HeapCount::HeapCount() noexcept : m_held(g_held), m_allocations(g_allocations) { g_peak = m_held; }
std::int64_t HeapCount::Now() const noexcept { return g_held - m_held; }
std::int64_t HeapCount::Peak() const noexcept { return g_peak - m_held; }
std::uint64_t HeapCount::Allocations() const noexcept { return g_allocations - m_allocations; }

void ArmFaults(const FaultPoint& point) {
  g_armed.kind = point.kind;
  g_armed.index = point.index;
  g_armed.lasting = point.lasting;
  g_armed.calls = 0;
  g_armed.met = false;
  g_armed.on = true;
}

std::int64_t DisarmFaults() {
  g_armed.on = false;
  return g_armed.calls;
}

bool FaultWasMet() { return g_armed.met; }

bool Fails(FaultKind kind) noexcept {
  if (!g_armed.on || !t_meets || kind != g_armed.kind) return false;
  const std::int64_t call = g_armed.calls++;
  const bool fails = g_armed.lasting ? call >= g_armed.index : call == g_armed.index;
  if (fails) g_armed.met = true;
  return fails;
}

MeetsFaults::MeetsFaults(bool on) noexcept : m_before(std::exchange(t_meets, on)) {}
MeetsFaults::~MeetsFaults() { t_meets = m_before; }

}  // namespace tarvex::fuzz

using namespace tarvex::fuzz;  // NOLINT(google-build-using-namespace)

extern "C" {
void* __wrap_malloc(std::size_t size) { return Fails(FaultKind::kMalloc) ? nullptr : Counted(__real_malloc(size)); }
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return Fails(FaultKind::kMalloc) ? nullptr : Counted(__real_calloc(count, size));
}
void* __wrap_realloc(void* memory, std::size_t size) {
  if (Fails(FaultKind::kMalloc)) return nullptr;
  Uncount(memory);
  void* moved = __real_realloc(memory, size);
  Counted(moved == nullptr ? memory : moved);
  return moved;
}
void __wrap_free(void* memory) { Free(memory); }
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

// The other forms call these.
void* operator new(std::size_t size) {
  if (void* memory = New(size)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return New(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto unit = static_cast<std::size_t>(alignment);
  void* memory = Fails(FaultKind::kNew) ? nullptr : std::aligned_alloc(unit, (size + unit - 1) / unit * unit);
  if (memory == nullptr) throw std::bad_alloc();
  return Counted(memory);
}
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { Free(memory); }
void operator delete(void* memory, std::align_val_t /*unit*/) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*unit*/) noexcept { Free(memory); }
