// The owner of one BSTR. A value: copies have their own string. One thread at a time.
#pragma once

#include <string_view>
#include <utility>

#include "framework/platform/platform.h"

namespace tarvex {

class BStr {
 public:
  BStr() noexcept = default;
  /// Throws std::bad_alloc. An empty text gives an empty string, not null.
  explicit BStr(std::basic_string_view<OLECHAR> text);
  BStr(const BStr& other);
  BStr(BStr&& other) noexcept : m_text(std::exchange(other.m_text, nullptr)) {}
  BStr& operator=(BStr other) noexcept {
    std::swap(m_text, other.m_text);
    return *this;
  }
  ~BStr() { SysFreeString(m_text); }

  /// Null when nothing was ever stored.
  BSTR Get() const noexcept { return m_text; }
  std::basic_string_view<OLECHAR> View() const noexcept;

  /// Gives the string to the caller, who frees it with SysFreeString.
  [[nodiscard]] BSTR Detach() noexcept { return std::exchange(m_text, nullptr); }
  /// For functions that store a string through a pointer: frees the present one first.
  BSTR* Put() noexcept;

 private:
  BSTR m_text = nullptr;
};

}  // namespace tarvex
