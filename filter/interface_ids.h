// The identifiers of the module's own interfaces, for ComPtr. The public headers carry the values; this
// ties them to the types for code inside the project.
#pragma once

#include "framework/platform/platform.h"
#include "include/tarvex/module_config.h"
#include "include/tarvex/module_log.h"

namespace tarvex {

template <>
inline const IID& IidOf<IModuleConfig>() {
  return IID_IModuleConfig;
}

template <>
inline const IID& IidOf<IModuleLog>() {
  return IID_IModuleLog;
}

}  // namespace tarvex
