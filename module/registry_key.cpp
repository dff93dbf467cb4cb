// Calls of the system's registry.
#include "module/registry_key.h"

#include <utility>

namespace tarvex {

CRegistryKey::~CRegistryKey() {
  if (m_owned && m_key != nullptr) RegCloseKey(m_key);
}

CRegistryKey::CRegistryKey(CRegistryKey&& other) noexcept
    : m_key(std::exchange(other.m_key, nullptr)), m_owned(std::exchange(other.m_owned, false)) {}

CRegistryKey CRegistryKey::Open(HKEY parent, const wchar_t* name) noexcept {
  CRegistryKey key(nullptr);
  key.m_owned = RegOpenKeyExW(parent, name, 0, KEY_ALL_ACCESS, &key.m_key) == ERROR_SUCCESS;
  return key;
}

CRegistryKey CRegistryKey::Create(HKEY parent, const wchar_t* name) noexcept {
  CRegistryKey key(nullptr);
  key.m_owned =
      RegCreateKeyExW(parent, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key.m_key, nullptr) == ERROR_SUCCESS;
  return key;
}

void CRegistryKey::SetString(const wchar_t* name, const std::wstring& value) const noexcept {
  if (m_key == nullptr) return;
  const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
  RegSetValueExW(m_key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()), bytes);
}

void CRegistryKey::DeleteSubkey(const wchar_t* name) const noexcept {
  if (m_key != nullptr) RegDeleteTreeW(m_key, name);
}

}  // namespace tarvex
