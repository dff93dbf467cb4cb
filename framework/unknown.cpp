// Reference counting and aggregation.
#include "framework/unknown.h"

namespace tarvex {

CUnknown::CUnknown(const char* name, IUnknown* outer)
    : m_module(name), m_inner(*this), m_outer(outer != nullptr ? outer : &m_inner) {}

HRESULT STDMETHODCALLTYPE CUnknown::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  if (iid == IID_IUnknown) return GiveInterface(&m_inner, out);
  *out = nullptr;
  return E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE CUnknown::NonDelegatingAddRef() { return ++m_references; }

ULONG STDMETHODCALLTYPE CUnknown::NonDelegatingRelease() {
  const ULONG left = --m_references;
  if (left != 0) return left;
  m_references = 1;
  OnLastRelease();
  if (--m_references == 0) {
    // A reference taken and given back during destruction must not destroy a second time.
    m_references = 1;
    delete this;
  }
  return left;
}

HRESULT STDMETHODCALLTYPE CUnknown::InnerUnknown::QueryInterface(REFIID iid, void** out) {
  return m_object.NonDelegatingQueryInterface(iid, out);
}

ULONG STDMETHODCALLTYPE CUnknown::InnerUnknown::AddRef() { return m_object.NonDelegatingAddRef(); }

ULONG STDMETHODCALLTYPE CUnknown::InnerUnknown::Release() { return m_object.NonDelegatingRelease(); }

HRESULT GiveInterface(IUnknown* object, void** out) noexcept {
  if (out == nullptr) return E_POINTER;
  object->AddRef();
  *out = object;
  return S_OK;
}

}  // namespace tarvex
