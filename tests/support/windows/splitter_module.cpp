// splitter_module.h for Windows: the module is the tarvex.dll that the build made, found by the path
// compiled in, or another one that TARVEX_MODULE names.
#include "tests/support/splitter_module.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "framework/text_conversion.h"
#include "include/tarvex/class_ids.h"
#include "tests/support/patience.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

using GetClassObjectFunction = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
using CanUnloadFunction = HRESULT(STDAPICALLTYPE*)();

WideString ModulePath() {
  const char* other = std::getenv("TARVEX_MODULE");
  return WideFromUtf8(SystemPath(other != nullptr ? other : TARVEX_MODULE_PATH));
}

// One loaded copy of the module; unloaded with the object.
class LoadedModule {
 public:
  explicit LoadedModule(const WideString& path) : m_handle(LoadLibraryW(path.c_str())) {
    if (m_handle == nullptr) throw std::runtime_error("cannot load " + Utf8FromWide(path));
  }
  ~LoadedModule() { FreeLibrary(m_handle); }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  HRESULT GetClass(REFCLSID clsid, REFIID iid, void** out) const {
    return Function<GetClassObjectFunction>("DllGetClassObject")(clsid, iid, out);
  }
  bool CanUnload() const { return Function<CanUnloadFunction>("DllCanUnloadNow")() == S_OK; }

 private:
  template <class F>
  F Function(const char* name) const {
    // By way of a function type without arguments, which may become any other.
    const auto function = reinterpret_cast<F>(reinterpret_cast<void (*)()>(GetProcAddress(m_handle, name)));
    if (function == nullptr) throw std::runtime_error(std::string("the module does not export ") + name);
    return function;
  }

  HMODULE m_handle;
};

const LoadedModule& TheModule() {
  static const LoadedModule module(ModulePath());
  return module;
}

void UseOne(const LoadedModule& module, const std::function<void(ComPtr<IBaseFilter>)>& use) {
  ComPtr<IClassFactory> factory;
  ComPtr<IBaseFilter> filter;
  if (FAILED(module.GetClass(CLSID_MatroskaSplitter, IID_IClassFactory, factory.PutVoid())) ||
      FAILED(factory->CreateInstance(nullptr, IidOf<IBaseFilter>(), filter.PutVoid()))) {
    throw std::runtime_error("the copy of the module makes no splitter");
  }
  use(std::move(filter));
}

}  // namespace

HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** out) { return TheModule().GetClass(clsid, iid, out); }

bool ModuleIsIdle() { return TheModule().CanUnload(); }

bool LoadUseAndUnload(const std::function<void(ComPtr<IBaseFilter>)>& use) {
  const WideString copy = WideFromUtf8("tarvex-copy-" + std::to_string(GetCurrentProcessId()) + ".dll");
  if (!CopyFileW(ModulePath().c_str(), copy.c_str(), FALSE)) return false;
  bool idle = false;
  {
    const LoadedModule module(copy);
    UseOne(module, use);
    idle = Eventually([&] { return module.CanUnload(); });
  }
  const bool gone = GetModuleHandleW(copy.c_str()) == nullptr;
  DeleteFileW(copy.c_str());
  return idle && gone;
}

}  // namespace tarvex::test
