#include "scanner/elements/heap.h"

#include <ebml/EbmlBinary.h>
#include <ebml/EbmlFloat.h>
#include <ebml/EbmlString.h>
#include <ebml/EbmlUInteger.h>
#include <ebml/EbmlUnicodeString.h>

namespace tarvex {

namespace {

template <class T>
const T* FindAs(const CHeap& heap, std::string_view key) {
  return dynamic_cast<const T*>(heap.Find(key));
}

}  // namespace

void CHeap::Store(std::string_view key, const libebml::EbmlElement& element) {
  std::shared_ptr<const libebml::EbmlElement> clone(element.Clone());
  m_elements.insert_or_assign(std::string(key), std::move(clone));
}

const libebml::EbmlElement* CHeap::Find(std::string_view key) const {
  const auto found = m_elements.find(key);
  return found == m_elements.end() ? nullptr : found->second.get();
}

std::optional<std::uint64_t> CHeap::Unsigned(std::string_view key) const {
  const auto* element = FindAs<libebml::EbmlUInteger>(*this, key);
  return element == nullptr ? std::nullopt : std::optional<std::uint64_t>(element->GetValue());
}

std::optional<double> CHeap::Float(std::string_view key) const {
  const auto* element = FindAs<libebml::EbmlFloat>(*this, key);
  return element == nullptr ? std::nullopt : std::optional<double>(element->GetValue());
}

std::optional<std::string> CHeap::String(std::string_view key) const {
  const auto* element = FindAs<libebml::EbmlString>(*this, key);
  return element == nullptr ? std::nullopt : std::optional<std::string>(element->GetValue());
}

std::optional<WideString> CHeap::Text(std::string_view key) const {
  const auto* element = FindAs<libebml::EbmlUnicodeString>(*this, key);
  return element == nullptr ? std::nullopt : std::optional<WideString>(WideFromUtf8(element->GetValueUTF8()));
}

std::optional<std::span<const std::uint8_t>> CHeap::Binary(std::string_view key) const {
  const auto* element = FindAs<libebml::EbmlBinary>(*this, key);
  if (element == nullptr) return std::nullopt;
  const std::uint8_t* data = element->GetBuffer();
  return std::span<const std::uint8_t>(data, data == nullptr ? 0 : static_cast<std::size_t>(element->GetSize()));
}

}  // namespace tarvex
