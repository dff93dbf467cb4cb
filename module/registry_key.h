// The owner of one open registry key. Used by registration on one thread. Failures leave the registry as
// it was and are not reported.
#pragma once

#include <string>

#include "framework/platform/platform.h"

namespace tarvex {

class CRegistryKey {
 public:
  /// A key that is always open, such as HKEY_CLASSES_ROOT, and is not closed.
  explicit CRegistryKey(HKEY predefined) noexcept : m_key(predefined) {}
  ~CRegistryKey();
  CRegistryKey(CRegistryKey&& other) noexcept;
  CRegistryKey(const CRegistryKey&) = delete;
  CRegistryKey& operator=(const CRegistryKey&) = delete;

  /// Both give a key on which nothing has an effect when the system refuses.
  static CRegistryKey Open(HKEY parent, const wchar_t* name) noexcept;
  static CRegistryKey Create(HKEY parent, const wchar_t* name) noexcept;

  void SetString(const wchar_t* name, const std::wstring& value) const noexcept;
  /// With all that is below it; none by that name is fine.
  void DeleteSubkey(const wchar_t* name) const noexcept;

 private:
  HKEY m_key = nullptr;
  bool m_owned = false;
};

}  // namespace tarvex
