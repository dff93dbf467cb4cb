/*
 * Lets a host see what the module logs. Obtained from the filter by QueryInterface, in the filter's own
 * process only; the switch is one for the whole module. Without a sink the module keeps no text at all.
 */
#pragma once

#include "declarations.h"

#ifdef __cplusplus
namespace tarvex {
#endif

/** Receives one text without a newline, on the thread that logged it, one call at a time. */
typedef void(STDMETHODCALLTYPE* ModuleLogSink)(void* context, const char* text); /* NOLINT(modernize-use-using) */

/**
 * Interface identifier of IModuleLog.
 * {88CAD9AD-C219-4735-8CAB-D85ED854A100}
 */
TARVEX_GUID IID_IModuleLog = {0x88CAD9AD, 0xC219, 0x4735, {0x8C, 0xAB, 0xD8, 0x5E, 0xD8, 0x54, 0xA1, 0x00}};

/*
 * SetSink directs all texts of the module to `sink`, or nowhere when it is null. When it returns, the former
 * sink is not called any more. Not to be called from inside a sink.
 */
#ifdef __cplusplus
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
TARVEX_INTERFACE("88CAD9AD-C219-4735-8CAB-D85ED854A100") IModuleLog : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE SetSink(ModuleLogSink sink, void* context) = 0;
};

}  // namespace tarvex
TARVEX_INTERFACE_ID(tarvex::IModuleLog, 0x88CAD9AD, 0xC219, 0x4735, 0x8C, 0xAB, 0xD8, 0x5E, 0xD8, 0x54, 0xA1, 0x00)
#else
typedef struct IModuleLog IModuleLog;
typedef struct IModuleLogVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(IModuleLog* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(IModuleLog* self);
  ULONG(STDMETHODCALLTYPE* Release)(IModuleLog* self);
  HRESULT(STDMETHODCALLTYPE* SetSink)(IModuleLog* self, ModuleLogSink sink, void* context);
} IModuleLogVtbl;
struct IModuleLog {
  const IModuleLogVtbl* lpVtbl;
};
#endif
