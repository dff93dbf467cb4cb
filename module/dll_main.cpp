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

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID processEnds) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(module);
  // When the process ends, its threads are gone and what they held cannot have been released.
  if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) CheckNothingIsLeft();
  return TRUE;
}
