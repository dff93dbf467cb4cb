// The owner of one BSTR.
#include "framework/bstr.h"

#include <new>

namespace tarvex {

BStr::BStr(std::basic_string_view<OLECHAR> text)
    : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
  if (m_text == nullptr) throw std::bad_alloc();
}

BStr::BStr(const BStr& other) {
  if (other.m_text != nullptr) *this = BStr(other.View());
}

std::basic_string_view<OLECHAR> BStr::View() const noexcept {
  if (m_text == nullptr) return {};
  return {m_text, SysStringLen(m_text)};
}

BSTR* BStr::Put() noexcept {
  SysFreeString(std::exchange(m_text, nullptr));
  return &m_text;
}

}  // namespace tarvex
