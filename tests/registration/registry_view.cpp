// See registry_view.h.
#include "tests/registration/registry_view.h"

#include <memory>
#include <stdexcept>
#include <type_traits>

#include "framework/platform/platform.h"

namespace tarvex::test {

namespace {

struct KeyDeleter {
  void operator()(HKEY key) const noexcept { RegCloseKey(key); }
};
using KeyPtr = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyDeleter>;

KeyPtr Open(const std::wstring& name) {
  HKEY key = nullptr;
  return KeyPtr(RegOpenKeyExW(HKEY_CLASSES_ROOT, name.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS ? key : nullptr);
}

// Of one of these types; null-terminated where it is text.
std::vector<std::uint8_t> RawValue(const std::wstring& name, const wchar_t* value, DWORD types) {
  std::vector<std::uint8_t> bytes(4096);
  auto size = static_cast<DWORD>(bytes.size());
  const LSTATUS result = RegGetValueW(HKEY_CLASSES_ROOT, name.c_str(), value, types, nullptr, bytes.data(), &size);
  bytes.resize(result == ERROR_SUCCESS ? size : 0);
  return bytes;
}

}  // namespace

bool KeyExists(const std::wstring& name) { return Open(name) != nullptr; }

unsigned ValueCount(const std::wstring& name) {
  const KeyPtr key = Open(name);
  DWORD count = 0;
  if (key) {
    RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                     nullptr);
  }
  return count;
}

std::optional<std::wstring> TextValue(const std::wstring& name, const wchar_t* value) {
  const std::vector<std::uint8_t> bytes = RawValue(name, value, RRF_RT_REG_SZ);
  if (bytes.empty()) return std::nullopt;
  return std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()));
}

std::vector<std::uint8_t> BytesValue(const std::wstring& name, const wchar_t* value) {
  return RawValue(name, value, RRF_RT_REG_BINARY);
}

void MakeKey(const std::wstring& name, const wchar_t* value, const std::wstring& text) {
  HKEY key = nullptr;
  if (RegCreateKeyExW(HKEY_CLASSES_ROOT, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) !=
      ERROR_SUCCESS) {
    throw std::runtime_error("cannot write to the registry");
  }
  const KeyPtr owner(key);
  const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  RegSetValueExW(key, value, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), size);
}

void DeleteKey(const std::wstring& name) { RegDeleteTreeW(HKEY_CLASSES_ROOT, name.c_str()); }

}  // namespace tarvex::test
