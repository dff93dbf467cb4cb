// The compiler's thread library, which is linked in, wants to see every exception of the whole process before
// anybody else: it adds a vectored handler as soon as the module is loaded, for the names that it gives threads
// under a debugger. The module names no thread, and its host's exceptions are none of its business. So the
// library's import of that function leads here and not to the platform. Without a handler the library names
// threads under a debugger only.

#include "framework/platform/platform.h"

namespace {

PVOID WINAPI AddNoHandler(ULONG, PVECTORED_EXCEPTION_HANDLER) { return nullptr; }

}  // namespace

// The name by which compiled code finds the import; 32-bit names carry the size of the arguments.
#ifdef _WIN64
#define TARVEX_IMPORT_NAME "__imp_AddVectoredExceptionHandler"
#else
#define TARVEX_IMPORT_NAME "__imp__AddVectoredExceptionHandler@8"
#endif
extern "C" {
extern decltype(&AddNoHandler) const g_addVectoredExceptionHandler __asm__(TARVEX_IMPORT_NAME);
decltype(&AddNoHandler) const g_addVectoredExceptionHandler = &AddNoHandler;
}
