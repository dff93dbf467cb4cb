// The module's entry point. The loader calls it with its lock held, so it does next to nothing.

#include "framework/module_lock.h"
#include "framework/platform/platform.h"

namespace {

#ifdef TARVEX_DEBUG_CHECKS
void Report(const char* text) {
  OutputDebugStringA("tarvex.dll is unloaded while this lives: ");
  OutputDebugStringA(text);
  OutputDebugStringA("\n");
}

void CheckNothingIsLeft() {
  if (tarvex::ReportLeftObjects(&Report) != 0) DebugBreak();
}
#else
void CheckNothingIsLeft() {}
#endif

}  // namespace

// It does not switch the loader's calls for threads off: in them the compiler's libraries, which are linked in, free
// what they keep for each thread.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID processEnds) {
  // When the process ends, its threads are gone and what they held cannot have been released.
  if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) CheckNothingIsLeft();
  return TRUE;
}
