// A filter's own hold on one of its pins. Lives in the filter's members; when it is destroyed or
// assigned over, the pin leaves the filter.
#pragma once

#include <utility>

#include "framework/base_pin.h"

namespace tarvex {

/// Unlike ComPtr it does not count on the filter. T derives from CBasePin. May be empty.
template <class T>
class OwnedPin {
 public:
  OwnedPin() noexcept = default;
  explicit OwnedPin(T* pin) noexcept : m_pin(pin) {
    if (m_pin != nullptr) m_pin->OwnerAddRef();
  }
  explicit OwnedPin(const ComPtr<T>& pin) noexcept : OwnedPin(pin.Get()) {}
  OwnedPin(OwnedPin&& other) noexcept : m_pin(std::exchange(other.m_pin, nullptr)) {}
  OwnedPin& operator=(OwnedPin&& other) noexcept {
    OwnedPin(std::move(other)).Swap(*this);
    return *this;
  }
  OwnedPin(const OwnedPin&) = delete;
  OwnedPin& operator=(const OwnedPin&) = delete;
  ~OwnedPin() { Reset(); }

  /// The pin leaves the filter; its memory stays for as long as others hold it.
  void Reset() noexcept {
    T* pin = std::exchange(m_pin, nullptr);
    if (pin == nullptr) return;
    pin->LeaveFilter();
    pin->OwnerRelease();
  }
  void Swap(OwnedPin& other) noexcept { std::swap(m_pin, other.m_pin); }

  T* Get() const noexcept { return m_pin; }
  T* operator->() const noexcept { return m_pin; }
  T& operator*() const noexcept { return *m_pin; }
  explicit operator bool() const noexcept { return m_pin != nullptr; }

 private:
  T* m_pin = nullptr;
};

}  // namespace tarvex
