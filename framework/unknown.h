// COM identity, reference counting and aggregation: the base of every COM object of the module. An
// object starts without references; whoever creates it takes the first one.
#pragma once

#include <atomic>

#include "framework/module_lock.h"
#include "framework/platform/platform.h"

namespace tarvex {

/// The object's own IUnknown, as opposed to the one it shares with an aggregating outer object.
struct INonDelegatingUnknown {  // NOLINT(cppcoreguidelines-virtual-class-destructor)
  virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) = 0;
  virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;
};

/// Counts references and deletes itself with the last. Derived classes override
/// NonDelegatingQueryInterface and pass on what they do not know. Classes that inherit interfaces
/// besides route their IUnknown to Owner(); UnknownImpl does that for them.
class CUnknown : public INonDelegatingUnknown {
 public:
  /// `name` is a literal for the debug report; `outer` is the aggregating object, or null. It is not
  /// counted: the outer object owns this one.
  CUnknown(const char* name, IUnknown* outer);
  virtual ~CUnknown() = default;
  CUnknown(const CUnknown&) = delete;
  CUnknown& operator=(const CUnknown&) = delete;

  /// The IUnknown that decides: the outer object's, or this one's own. Not counted.
  IUnknown* Owner() const noexcept { return m_outer; }
  /// This object's own IUnknown, for an aggregating creator. Not counted.
  IUnknown* Inner() noexcept { return &m_inner; }

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE NonDelegatingAddRef() override;
  ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;

 protected:
  /// Of all that others hold, at this moment.
  ULONG References() const noexcept { return m_references.load(std::memory_order_acquire); }
  /// The last reference has gone. Whatever takes one now keeps the object, and this is called again when that goes.
  virtual void OnLastRelease() noexcept {}

 private:
  // A separate object, since two functions of one class cannot both be QueryInterface.
  class InnerUnknown : public IUnknown {  // NOLINT(cppcoreguidelines-virtual-class-destructor)
   public:
    explicit InnerUnknown(CUnknown& object) noexcept : m_object(object) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

   private:
    CUnknown& m_object;
  };

  ModuleObject m_module;
  InnerUnknown m_inner;
  IUnknown* const m_outer;
  std::atomic<ULONG> m_references{0};
};

/// For NonDelegatingQueryInterface: stores `object` with a reference added. S_OK.
HRESULT GiveInterface(IUnknown* object, void** out) noexcept;

/// CUnknown plus interfaces whose IUnknown is routed to the owner.
template <class... Interfaces>
class UnknownImpl : public CUnknown, public Interfaces... {
 public:
  using CUnknown::CUnknown;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    return Owner()->QueryInterface(iid, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return Owner()->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return Owner()->Release(); }
};

}  // namespace tarvex
