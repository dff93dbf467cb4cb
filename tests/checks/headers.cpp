// A host in C++: the identifiers that the compiler ties to the interfaces are those that the headers name.
#include <tarvex/chapter_entry.h>
#include <tarvex/class_ids.h>
#include <tarvex/module_config.h>
#include <tarvex/module_log.h>

// Microsoft's __uuidof is an extension to clang, and no part of our headers.
#if defined(__clang__)
#pragma clang diagnostic ignored "-Wlanguage-extension-token"
#endif

namespace {

constexpr bool Same(const GUID& a, const GUID& b) {
  for (int i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) return false;
  }
  return a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3;
}

}  // namespace

#if defined(TARVEX_UUIDOF_IS_CONSTANT)
static_assert(Same(__uuidof(tarvex::IModuleConfig), tarvex::IID_IModuleConfig), "IModuleConfig");
static_assert(Same(__uuidof(tarvex::IModuleLog), tarvex::IID_IModuleLog), "IModuleLog");
#endif
static_assert(!Same(tarvex::IID_IModuleConfig, tarvex::IID_IModuleLog), "two interfaces");

HRESULT Ask(IUnknown* object, const GUID* parameter, VARIANT* value);
HRESULT Ask(IUnknown* object, const GUID* parameter, VARIANT* value) {
  tarvex::IModuleConfig* config = nullptr;
  HRESULT result = object->QueryInterface(IID_PPV_ARGS(&config));
  if (FAILED(result)) return result;
  result = config->GetValue(parameter, value);
  config->Release();
  return result;
}
