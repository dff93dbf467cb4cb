// A stand-in for COM's apartments that counts, so that a test sees who is in one.
#include <atomic>

#include "framework/platform/linux/com_types.h"

namespace {

std::atomic<LONG> g_entered{0};
thread_local LONG t_entered = 0;

}  // namespace

HRESULT CoInitializeEx(void* /*reserved*/, DWORD /*kind*/) {
  ++g_entered;
  return t_entered++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() {
  --g_entered;
  --t_entered;
}

LONG ApartmentsEntered() { return g_entered; }

bool IsInApartment() { return t_entered > 0; }
