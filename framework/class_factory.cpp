// The class factory of a module that lists its classes in a table.
#include "framework/class_factory.h"

#include <algorithm>

#include "framework/com_boundary.h"
#include "framework/com_ptr.h"

namespace tarvex {

CClassFactory::CClassFactory(const FactoryTemplate& entry) : UnknownImpl("CClassFactory", nullptr), m_entry(entry) {}

HRESULT STDMETHODCALLTYPE CClassFactory::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IClassFactory) return GiveInterface(static_cast<IClassFactory*>(this), out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE CClassFactory::CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) {
  if (ppvObject == nullptr) return E_POINTER;
  *ppvObject = nullptr;
  // An outer object must get hold of the inner one's own IUnknown first.
  if (pUnkOuter != nullptr && riid != IID_IUnknown) return E_NOINTERFACE;
  return ComBoundary([&]() -> HRESULT {
    HRESULT hr = S_OK;
    CUnknown* object = m_entry.create(pUnkOuter, &hr);
    if (object == nullptr) return FAILED(hr) ? hr : E_OUTOFMEMORY;
    const ComPtr<IUnknown> inner(object->Inner());
    return FAILED(hr) ? hr : inner->QueryInterface(riid, ppvObject);
  });
}

HRESULT STDMETHODCALLTYPE CClassFactory::LockServer(BOOL fLock) {
  LockModule(fLock != FALSE);
  return S_OK;
}

HRESULT GetClassObjectFrom(std::span<const FactoryTemplate> table, REFCLSID clsid, REFIID iid, void** out) noexcept {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  const auto entry = std::find_if(table.begin(), table.end(), [&](const auto& row) { return *row.clsid == clsid; });
  if (entry == table.end()) return CLASS_E_CLASSNOTAVAILABLE;
  return ComBoundary([&] { return MakeCom<CClassFactory>(*entry)->QueryInterface(iid, out); });
}

}  // namespace tarvex
