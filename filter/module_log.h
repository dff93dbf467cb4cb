// The switch behind IModuleLog: passes the module's texts to a host's sink. A part of the filter, but there is one sink
// for the whole module; any thread.
#pragma once

#include "framework/interface_part.h"
#include "include/tarvex/module_log.h"

namespace tarvex {

class ModuleLog final : public InterfacePart<IModuleLog> {
 public:
  using InterfacePart::InterfacePart;

  /// When this returns, the former sink is not called any more. Null takes the sink away. S_OK.
  HRESULT STDMETHODCALLTYPE SetSink(ModuleLogSink sink, void* context) override;
};

}  // namespace tarvex
