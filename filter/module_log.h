// The switch behind IModuleLog: passes the module's texts to a host's sink. One for the whole module;
// any thread.
#pragma once

#include "include/tarvex/module_log.h"

namespace tarvex {

/// When this returns, the former sink is not called any more. Null takes the sink away.
void SetModuleLogSink(ModuleLogSink sink, void* context) noexcept;

}  // namespace tarvex
