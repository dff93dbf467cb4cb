// An interface of a COM object that one of the object's parts implements. Belongs to the object, whose identity and
// count it shares; any thread.
#pragma once

#include "framework/unknown.h"

namespace tarvex {

/// The whole object gives out its parts in NonDelegatingQueryInterface, each as a member of its own class.
template <class... Interfaces>
class InterfacePart : public Interfaces... {
 public:
  /// `whole` is what the part is a member of; it is not counted.
  explicit InterfacePart(const CUnknown& whole) noexcept : m_whole(whole) {}
  InterfacePart(const InterfacePart&) = delete;
  InterfacePart& operator=(const InterfacePart&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    return m_whole.Owner()->QueryInterface(iid, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return m_whole.Owner()->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return m_whole.Owner()->Release(); }

 protected:
  ~InterfacePart() = default;

 private:
  const CUnknown& m_whole;
};

}  // namespace tarvex
