// Registration of a module's classes and filters in the registry and with the filter mapper. Windows
// only; called from DllRegisterServer and DllUnregisterServer.
#pragma once

#include <span>

#include "framework/class_factory.h"

namespace tarvex {

/// Writes (or deletes) for every class of the table CLSID\{..} with its name, InprocServer32 with the
/// path of this module and threading model Both, and tells the filter mapper about the filters. The
/// first failure is returned; when unregistering, what is not there is no failure and the rest is
/// done all the same.
HRESULT AMovieDllRegisterServer2(std::span<const FactoryTemplate> table, BOOL doRegister) noexcept;

}  // namespace tarvex
