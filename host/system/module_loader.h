// Where the splitter comes from: the registered class, or a DLL named by the user. Owned by a command,
// outlives every filter it makes; main thread.
#pragma once

#include <string>

#include "framework/com_ptr.h"
#include "framework/text_conversion.h"

namespace tarvex::host {

class ModuleLoader {
 public:
  /// `path` (as NarrowFileName gives it) names a DLL; empty for the registered module. Throws HostError.
  explicit ModuleLoader(const std::string& path);
  /// Unloads a named DLL unless something in it is still alive.
  ~ModuleLoader();
  ModuleLoader(const ModuleLoader&) = delete;
  ModuleLoader& operator=(const ModuleLoader&) = delete;

  /// A new splitter filter. Throws HostError.
  ComPtr<IBaseFilter> CreateSplitter() const;

  /// The factory of a class of the named DLL; null when no DLL is named, since COM knows the class then.
  /// Throws HostError when the DLL has no such class.
  ComPtr<IClassFactory> Factory(REFCLSID clsid) const;

 private:
  const std::string m_path;
  HMODULE m_module = nullptr;
};

}  // namespace tarvex::host
