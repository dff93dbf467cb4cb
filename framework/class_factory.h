// The class factory of a module that lists its classes in a table. Made on demand for COM; any thread.
#pragma once

#include <span>

#include "framework/filter_setup.h"
#include "framework/unknown.h"

namespace tarvex {

/// One creatable class. The table is constant data of the module and outlives every factory.
struct FactoryTemplate {
  const OLECHAR* name = nullptr;
  const CLSID* clsid = nullptr;
  /// Makes the object, without references. May throw. If it stores a failure in `*result`, the factory deletes the
  /// object again.
  CUnknown* (*create)(IUnknown* outer, HRESULT* result) = nullptr;
  const FilterSetup* setup = nullptr;  ///< null for what is no filter
};

class CClassFactory : public UnknownImpl<IClassFactory> {
 public:
  explicit CClassFactory(const FactoryTemplate& entry);

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  /// E_NOINTERFACE when aggregated and asked for anything but IUnknown.
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) override;
  HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) override;

 private:
  const FactoryTemplate& m_entry;
};

/// The body of DllGetClassObject: CLASS_E_CLASSNOTAVAILABLE for a class that is not in the table.
HRESULT GetClassObjectFrom(std::span<const FactoryTemplate> table, REFCLSID clsid, REFIID iid, void** out) noexcept;

}  // namespace tarvex
