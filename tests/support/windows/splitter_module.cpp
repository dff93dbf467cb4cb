// splitter_module.h for Windows: the module is the tarvex.dll that the build made, found by the path
// compiled in, or another one that TARVEX_MODULE names.
#include "tests/support/splitter_module.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "framework/text_conversion.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

/// A function of the module, which stays loaded.
template <class F>
F Function(const char* name) {
  static HMODULE const module = [] {
    const char* other = std::getenv("TARVEX_MODULE");
    return LoadLibraryW(WideFromUtf8(SystemPath(other != nullptr ? other : TARVEX_MODULE_PATH)).c_str());
  }();
  // By way of a function type without arguments, which may become any other.
  const auto function = reinterpret_cast<F>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
  if (function == nullptr) throw std::runtime_error(std::string("there is no module with ") + name);
  return function;
}

}  // namespace

HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** out) {
  return Function<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>("DllGetClassObject")(clsid, iid, out);
}

bool ModuleIsIdle() { return Function<HRESULT(STDAPICALLTYPE*)()>("DllCanUnloadNow")() == S_OK; }

}  // namespace tarvex::test
