// Calls of the system's registry.
#include "framework/registry_key.h"

#include <array>

namespace tarvex {

RegistryKey::~RegistryKey() {
  if (m_key != nullptr) RegCloseKey(m_key);
}

HRESULT RegistryKey::Create(HKEY parent, const std::wstring& path) noexcept {
  const LSTATUS status = RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &m_key, nullptr);
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT RegistryKey::SetText(const wchar_t* name, const std::wstring& text) const noexcept {
  const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  const LSTATUS status = RegSetValueExW(m_key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), bytes);
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT DeleteRegistryTree(HKEY parent, const std::wstring& path) noexcept {
  const LSTATUS status = RegDeleteTreeW(parent, path.c_str());
  return status == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

std::wstring RegistryName(const GUID& guid) {
  std::array<wchar_t, 39> text{};  // braces, digits and the end
  StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
  return text.data();
}

}  // namespace tarvex
