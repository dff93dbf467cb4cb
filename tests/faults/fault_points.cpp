// See fault_points.h. Names that begin with __wrap_ are what the linker calls instead of the functions
// named behind it, and __real_ those functions.
#include "tests/faults/fault_points.h"

#include <zlib.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <system_error>
#include <utility>

namespace tarvex::test {
namespace {

constexpr std::size_t kKinds = std::size(kAllFaultKinds);

struct Armed {
  std::atomic<bool> on{false};
  std::atomic<bool> met{false};
  std::atomic<FaultKind> kind{FaultKind::kNew};
  std::atomic<bool> lasting{false};
  std::atomic<std::int64_t> index{0};
  std::atomic<std::int64_t> calls{0};
};
Armed g_armed;
std::atomic<std::int64_t> g_living{0};
thread_local bool t_meets = true;

bool Fails(FaultKind kind) noexcept {
  if (!g_armed.on || !t_meets || kind != g_armed.kind) return false;
  const std::int64_t call = g_armed.calls++;
  const bool fails = g_armed.lasting ? call >= g_armed.index : call == g_armed.index;
  if (fails) g_armed.met = true;
  return fails;
}

void* Count(void* block) noexcept {
  if (block != nullptr) ++g_living;
  return block;
}

void Uncount(const void* block) noexcept {
  if (block != nullptr) --g_living;
}

}  // namespace

const char* NameOf(FaultKind kind) {
  static constexpr const char* kNames[kKinds] = {"OperatorNew", "Malloc",       "CoTaskMemAlloc", "SysAllocString",
                                                 "SampleBlock", "SampleMemory", "Thread",         "Inflate"};
  return kNames[static_cast<std::size_t>(kind)];
}

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

MeetsFaults::MeetsFaults(bool on) : m_before(std::exchange(t_meets, on)) {}
MeetsFaults::~MeetsFaults() { t_meets = m_before; }

std::int64_t LivingBlocks() { return g_living; }

}  // namespace tarvex::test

using tarvex::test::Count;
using tarvex::test::Fails;
using tarvex::test::FaultKind;
using tarvex::test::MeetsNoFaults;
using tarvex::test::Uncount;

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
int __real_inflateInit_(z_streamp stream, const char* version, int size);
void* __real__Z14CoTaskMemAllocm(std::size_t size);
char16_t* __real__Z17SysAllocStringLenPKDsj(const char16_t* text, unsigned length);
bool __real__ZN6tarvex11MemoryBlock7ReserveEm(void* self, std::size_t size);
bool __real__ZN6tarvex11MemoryBlock10CommitMoreEm(void* self, std::size_t size);
void __real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(void* self,
                                                                                                  void* state,
                                                                                                  void (*depend)());

void* __wrap_malloc(std::size_t size) { return Fails(FaultKind::kMalloc) ? nullptr : Count(__real_malloc(size)); }

void* __wrap_calloc(std::size_t count, std::size_t size) {
  return Fails(FaultKind::kMalloc) ? nullptr : Count(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, std::size_t size) {
  if (Fails(FaultKind::kMalloc)) return nullptr;
  void* moved = __real_realloc(block, size);
  return block == nullptr ? Count(moved) : moved;
}

void __wrap_free(void* block) {
  Uncount(block);
  __real_free(block);
}

int __wrap_inflateInit_(z_streamp stream, const char* version, int size) {
  return Fails(FaultKind::kInflate) ? Z_MEM_ERROR : __real_inflateInit_(stream, version, size);
}

// Made of malloc, whose faults are others.
void* __wrap__Z14CoTaskMemAllocm(std::size_t size) {
  if (Fails(FaultKind::kTaskMemory)) return nullptr;
  const MeetsNoFaults inside;
  return __real__Z14CoTaskMemAllocm(size);
}

char16_t* __wrap__Z17SysAllocStringLenPKDsj(const char16_t* text, unsigned length) {
  if (Fails(FaultKind::kText)) return nullptr;
  const MeetsNoFaults inside;
  return __real__Z17SysAllocStringLenPKDsj(text, length);
}

bool __wrap__ZN6tarvex11MemoryBlock7ReserveEm(void* self, std::size_t size) {
  return !Fails(FaultKind::kRing) && __real__ZN6tarvex11MemoryBlock7ReserveEm(self, size);
}

bool __wrap__ZN6tarvex11MemoryBlock10CommitMoreEm(void* self, std::size_t size) {
  return !Fails(FaultKind::kRingMemory) && __real__ZN6tarvex11MemoryBlock10CommitMoreEm(self, size);
}

void __wrap__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(void* self,
                                                                                                  void* state,
                                                                                                  void (*depend)()) {
  if (Fails(FaultKind::kThread)) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  }
  __real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(self, state, depend);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

void* operator new(std::size_t size) {
  if (Fails(FaultKind::kNew)) throw std::bad_alloc();
  void* block = Count(__real_malloc(size == 0 ? 1 : size));
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  if (Fails(FaultKind::kNew)) throw std::bad_alloc();
  const auto unit = static_cast<std::size_t>(alignment);
  void* block = Count(std::aligned_alloc(unit, (size + unit - 1) / unit * unit));
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  if (Fails(FaultKind::kNew)) return nullptr;
  return Count(__real_malloc(size == 0 ? 1 : size));
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept { return operator new(size, tag); }

void operator delete(void* block) noexcept {
  Uncount(block);
  __real_free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept { operator delete(block); }
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept { operator delete(block); }
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  operator delete(block);
}
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { operator delete(block); }
