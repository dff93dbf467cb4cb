// One open key of the registry, and the texts and names that registration writes there. Windows only; used by
// registration, on the thread that registers.
#pragma once

#include <string>

#include "framework/platform/platform.h"

namespace tarvex {

/// Owns the key and closes it.
class RegistryKey {
 public:
  RegistryKey() noexcept = default;
  ~RegistryKey();
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;

  /// Opens the key, which is made if need be. To be called once, before SetText. Gives the system's code.
  HRESULT Create(HKEY parent, const std::wstring& path) noexcept;
  /// `name` null is the key's default value. Gives the system's code.
  HRESULT SetText(const wchar_t* name, const std::wstring& text) const noexcept;

 private:
  HKEY m_key = nullptr;
};

/// Deletes a key with all that is below it. S_OK also when there is none; else the system's code.
HRESULT DeleteRegistryTree(HKEY parent, const std::wstring& path) noexcept;

/// A GUID as the registry names it, in braces. Throws std::bad_alloc.
std::wstring RegistryName(const GUID& guid);

}  // namespace tarvex
