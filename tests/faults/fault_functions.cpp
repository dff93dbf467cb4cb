// The functions beside the heap's that can be made to fail, by the names that the linker gives them: what it calls
// instead of a function, and the function itself.
#include <zlib.h>

#include <system_error>

#include "fuzz/heap.h"

using tarvex::fuzz::Fails;
using tarvex::fuzz::FaultKind;
using tarvex::fuzz::MeetsNoFaults;

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
#define TARVEX_REAL_AND_WRAP(name, result, ...) \
  result __real_##name(__VA_ARGS__);            \
  result __wrap_##name(__VA_ARGS__)

extern "C" {

TARVEX_REAL_AND_WRAP(inflateInit_, int, z_streamp stream, const char* version, int size) {
  return Fails(FaultKind::kInflate) ? Z_MEM_ERROR : __real_inflateInit_(stream, version, size);
}

// These two are made of malloc, whose faults are others.
TARVEX_REAL_AND_WRAP(_Z14CoTaskMemAllocm, void*, std::size_t size) {
  if (Fails(FaultKind::kTaskMemory)) return nullptr;
  const MeetsNoFaults inside;
  return __real__Z14CoTaskMemAllocm(size);
}
TARVEX_REAL_AND_WRAP(_Z17SysAllocStringLenPKDsj, char16_t*, const char16_t* text, unsigned length) {
  if (Fails(FaultKind::kText)) return nullptr;
  const MeetsNoFaults inside;
  return __real__Z17SysAllocStringLenPKDsj(text, length);
}

TARVEX_REAL_AND_WRAP(_ZN6tarvex11MemoryBlock7ReserveEm, bool, void* self, std::size_t size) {
  return !Fails(FaultKind::kRing) && __real__ZN6tarvex11MemoryBlock7ReserveEm(self, size);
}
TARVEX_REAL_AND_WRAP(_ZN6tarvex11MemoryBlock10CommitMoreEm, bool, void* self, std::size_t size) {
  return !Fails(FaultKind::kRingMemory) && __real__ZN6tarvex11MemoryBlock10CommitMoreEm(self, size);
}

TARVEX_REAL_AND_WRAP(_ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE, void,
                     void* self, void* state, void (*depend)()) {
  if (Fails(FaultKind::kThread)) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  }
  __real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(self, state, depend);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
