// Registration of a module's classes in the registry.
#include "framework/register_server.h"

#include <string>

#include "framework/com_boundary.h"
#include "framework/filter_setup.h"
#include "framework/registry_key.h"

namespace tarvex {

namespace {

HRESULT WriteText(const std::wstring& path, const wchar_t* name, const std::wstring& text) {
  RegistryKey key;
  const HRESULT hr = key.Create(HKEY_CLASSES_ROOT, path);
  return FAILED(hr) ? hr : key.SetText(name, text);
}

std::wstring ClassPath(const CLSID& clsid) { return L"CLSID\\" + RegistryName(clsid); }

/// The path of the module that holds this code; empty when the system does not say.
std::wstring ModulePath() {
  static const int anchor = 0;
  HMODULE module = nullptr;
  if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                          reinterpret_cast<LPCWSTR>(&anchor), &module)) {
    return {};
  }
  // Long paths exceed MAX_PATH; the system's own limit is this.
  std::wstring path(32768, L'\0');
  const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
  path.resize(length < path.size() ? length : 0);
  return path;
}

HRESULT RegisterClass(const FactoryTemplate& row, const std::wstring& modulePath) {
  const std::wstring path = ClassPath(*row.clsid);
  HRESULT hr = WriteText(path, nullptr, row.name);
  if (FAILED(hr)) return hr;
  hr = WriteText(path + L"\\InprocServer32", nullptr, modulePath);
  if (FAILED(hr)) return hr;
  return WriteText(path + L"\\InprocServer32", L"ThreadingModel", L"Both");
}

HRESULT UnregisterClass(const FactoryTemplate& row) {
  return DeleteRegistryTree(HKEY_CLASSES_ROOT, ClassPath(*row.clsid));
}

HRESULT RegisterAll(std::span<const FactoryTemplate> table) {
  const std::wstring path = ModulePath();
  if (path.empty()) return E_FAIL;
  for (const FactoryTemplate& row : table) {
    HRESULT hr = RegisterClass(row, path);
    if (SUCCEEDED(hr) && row.setup != nullptr) hr = RegisterFilterSetup(*row.setup, true);
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

// Goes on after a failure: as much as can be removed is removed.
HRESULT UnregisterAll(std::span<const FactoryTemplate> table) {
  HRESULT result = S_OK;
  const auto keepFirst = [&](HRESULT hr) {
    if (FAILED(hr) && SUCCEEDED(result)) result = hr;
  };
  for (const FactoryTemplate& row : table) {
    if (row.setup != nullptr) keepFirst(RegisterFilterSetup(*row.setup, false));
    keepFirst(UnregisterClass(row));
  }
  return result;
}

}  // namespace

HRESULT AMovieDllRegisterServer2(std::span<const FactoryTemplate> table, BOOL doRegister) noexcept {
  return ComBoundary([&] { return doRegister != FALSE ? RegisterAll(table) : UnregisterAll(table); });
}

}  // namespace tarvex
