// What both builds share of splitter_module.h.
#include "tests/support/splitter_module.h"

#include <stdexcept>

#include "include/tarvex/class_ids.h"
#include "tests/support/patience.h"

namespace tarvex::test {

HRESULT CreateSplitter(IUnknown* outer, REFIID iid, void** out) {
  ComPtr<IClassFactory> factory;
  const HRESULT result = GetClassObject(CLSID_MatroskaSplitter, IID_IClassFactory, factory.PutVoid());
  return FAILED(result) ? result : factory->CreateInstance(outer, iid, out);
}

ComPtr<IBaseFilter> CreateSplitter() {
  ComPtr<IBaseFilter> filter;
  if (FAILED(CreateSplitter(nullptr, IidOf<IBaseFilter>(), filter.PutVoid()))) {
    throw std::runtime_error("the module makes no splitter");
  }
  return filter;
}

bool ModuleBecomesIdle() { return Eventually(ModuleIsIdle); }

}  // namespace tarvex::test
