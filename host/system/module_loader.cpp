#include "host/system/module_loader.h"

#include <fmt/format.h>

#include "host/system/file_name_text.h"
#include "host/system/host_error.h"
#include "host/system/input_file.h"
#include "host/system/result_text.h"
#include "include/tarvex/class_ids.h"

namespace tarvex::host {

namespace {

using GetClassObject = HRESULT(STDMETHODCALLTYPE*)(REFCLSID clsid, REFIID iid, void** out);
using CanUnloadNow = HRESULT(STDMETHODCALLTYPE*)();

// By way of a function type without arguments, which may become any other.
template <class F>
F FunctionOf(HMODULE module, const char* name) {
  return reinterpret_cast<F>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

}  // namespace

ModuleLoader::ModuleLoader(const std::string& path) : m_path(path) {
  if (path.empty()) return;
  const WideString full = FullPath(path);
  m_module = LoadLibraryExW(full.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (m_module != nullptr) return;
  const DWORD error = GetLastError();
  if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_MOD_NOT_FOUND) {
    throw HostError(ExitCode::kModuleNotFound, path + ": module not found");
  }
  throw HostError(ExitCode::kModuleNotFound, fmt::format("{}: cannot be loaded as a module (error {})", path, error));
}

ModuleLoader::~ModuleLoader() {
  if (m_module == nullptr) return;
  const auto canUnload = FunctionOf<CanUnloadNow>(m_module, "DllCanUnloadNow");
  if (canUnload == nullptr || canUnload() == S_OK) FreeLibrary(m_module);
}

ComPtr<IClassFactory> ModuleLoader::Factory(REFCLSID clsid) const {
  if (m_module == nullptr) return nullptr;
  const auto getClassObject = FunctionOf<GetClassObject>(m_module, "DllGetClassObject");
  ComPtr<IClassFactory> factory;
  if (getClassObject == nullptr || FAILED(getClassObject(clsid, IID_IClassFactory, factory.PutVoid()))) {
    throw HostError(ExitCode::kModuleNotFound, m_path + ": holds no Tarvex Matroska Splitter");
  }
  return factory;
}

ComPtr<IBaseFilter> ModuleLoader::CreateSplitter() const {
  ComPtr<IBaseFilter> filter;
  HRESULT result = S_OK;
  if (m_module != nullptr) {
    result = Factory(CLSID_MatroskaSplitter)->CreateInstance(nullptr, IID_IBaseFilter, filter.PutVoid());
  } else {
    result = CoCreateInstance(CLSID_MatroskaSplitter, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, filter.PutVoid());
  }
  if (SUCCEEDED(result)) return filter;
  if (m_module == nullptr && result == REGDB_E_CLASSNOTREG) {
    throw HostError(ExitCode::kModuleNotFound,
                    "Tarvex Matroska Splitter is not registered: run regsvr32 tarvex.dll, or give --module PATH");
  }
  throw HostError(ExitCode::kModuleNotFound,
                  (m_path.empty() ? "the registered module" : m_path) + " makes no splitter: " + ResultText(result));
}

}  // namespace tarvex::host
