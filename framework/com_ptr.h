// The owner of one reference to a COM object. A value: copying takes a reference, destroying gives it
// back. Not shared between threads without a lock.
#pragma once

#include <cstddef>
#include <utility>

#include "framework/platform/platform.h"

namespace tarvex {

template <class T>
class ComPtr {
 public:
  constexpr ComPtr() noexcept = default;
  constexpr ComPtr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): null is a value
  /// Takes a further reference.
  explicit ComPtr(T* object) noexcept : m_object(object) {
    if (m_object != nullptr) m_object->AddRef();
  }
  ComPtr(const ComPtr& other) noexcept : ComPtr(other.m_object) {}
  ComPtr(ComPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
  template <class U>
  ComPtr(const ComPtr<U>& other) noexcept  // NOLINT(google-explicit-constructor): as raw pointers do
      : ComPtr(static_cast<T*>(other.Get())) {}
  template <class U>
  ComPtr(ComPtr<U>&& other) noexcept  // NOLINT(google-explicit-constructor): as raw pointers do
      : m_object(other.Detach()) {}
  ~ComPtr() { Reset(); }

  ComPtr& operator=(const ComPtr& other) noexcept {
    ComPtr(other).Swap(*this);
    return *this;
  }
  ComPtr& operator=(ComPtr&& other) noexcept {
    ComPtr(std::move(other)).Swap(*this);
    return *this;
  }
  ComPtr& operator=(std::nullptr_t) noexcept {
    Reset();
    return *this;
  }

  /// Becomes the owner of a reference that the caller holds.
  static ComPtr Attach(T* object) noexcept {
    ComPtr owner;
    owner.m_object = object;
    return owner;
  }
  /// Gives the reference to the caller.
  [[nodiscard]] T* Detach() noexcept { return std::exchange(m_object, nullptr); }

  void Reset() noexcept {
    T* object = std::exchange(m_object, nullptr);
    if (object != nullptr) object->Release();
  }
  void Swap(ComPtr& other) noexcept { std::swap(m_object, other.m_object); }

  T* Get() const noexcept { return m_object; }
  T* operator->() const noexcept { return m_object; }
  T& operator*() const noexcept { return *m_object; }
  explicit operator bool() const noexcept { return m_object != nullptr; }

  /// For functions that store a reference through a pointer: empties this first.
  T** Put() noexcept {
    Reset();
    return &m_object;
  }
  void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

  /// Stores a further reference into a COM output argument.
  void CopyTo(T** out) const noexcept {
    if (m_object != nullptr) m_object->AddRef();
    *out = m_object;
  }

  /// Asks the object for interface U; null when this is empty or the object lacks it.
  template <class U>
  ComPtr<U> Query() const noexcept {
    ComPtr<U> result;
    if (m_object == nullptr || FAILED(m_object->QueryInterface(IidOf<U>(), result.PutVoid()))) return nullptr;
    return result;
  }
  /// The same, with the object's result code.
  template <class U>
  HRESULT Query(ComPtr<U>& result) const noexcept {
    if (m_object == nullptr) return E_POINTER;
    return m_object->QueryInterface(IidOf<U>(), result.PutVoid());
  }

  friend bool operator==(const ComPtr& a, const ComPtr& b) noexcept { return a.m_object == b.m_object; }
  friend bool operator==(const ComPtr& a, const T* b) noexcept { return a.m_object == b; }
  friend bool operator==(const ComPtr& a, std::nullptr_t) noexcept { return a.m_object == nullptr; }

 private:
  T* m_object = nullptr;
};

/// Asks `object` for interface U; null when it is null or lacks the interface.
template <class U, class T>
ComPtr<U> QueryFor(T* object) noexcept {
  return ComPtr<T>(object).template Query<U>();
}

/// Creates a COM object, which starts without references, and takes its first.
template <class T, class... Args>
ComPtr<T> MakeCom(Args&&... args) {
  return ComPtr<T>(new T(std::forward<Args>(args)...));
}

/// Both are the same object: COM's identity rule.
inline bool IsSameObject(IUnknown* a, IUnknown* b) noexcept {
  return a == b || (a != nullptr && b != nullptr && QueryFor<IUnknown>(a) == QueryFor<IUnknown>(b));
}

}  // namespace tarvex
