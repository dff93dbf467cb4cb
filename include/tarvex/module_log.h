// Lets a host see what the module logs. Obtained from the filter by QueryInterface; the switch is one
// for the whole module. Without a sink the module keeps no text at all.
#pragma once

#if __has_include(<oaidl.h>)
#include <oaidl.h>
#else
#include "framework/platform/platform.h"
#endif

namespace tarvex {

/// Receives one text without a newline, on the thread that logged it, one call at a time.
using ModuleLogSink = void(STDMETHODCALLTYPE*)(void* context, const char* text);

/// Interface identifier of IModuleLog.
/// {88CAD9AD-C219-4735-8CAB-D85ED854A100}
inline constexpr GUID IID_IModuleLog = {0x88CAD9AD, 0xC219, 0x4735, {0x8C, 0xAB, 0xD8, 0x5E, 0xD8, 0x54, 0xA1, 0x00}};

struct IModuleLog : public IUnknown {  // NOLINT(cppcoreguidelines-virtual-class-destructor)
  /// Directs all texts of the module to `sink`, or nowhere when it is null. When this returns, the
  /// former sink is not called any more. Not to be called from inside a sink.
  virtual HRESULT STDMETHODCALLTYPE SetSink(ModuleLogSink sink, void* context) = 0;
};

}  // namespace tarvex
