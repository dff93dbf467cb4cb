// The kept elements of one track entry (or of the segment information), looked up by libmatroska class name. Filled by
// the scanner on the thread that opens the file; afterwards nobody writes, and pin creation and the worker read.
#pragma once

#include <ebml/EbmlElement.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "framework/text_conversion.h"

namespace tarvex {

/// Copies share the elements, which nobody changes after they are stored, so a copy stays valid when
/// the scanner is reset. The typed readers answer nothing when the key is absent or holds an element
/// of another kind.
class CHeap {
 public:
  virtual ~CHeap() = default;
  CHeap() = default;
  CHeap(const CHeap&) = default;
  CHeap& operator=(const CHeap&) = default;
  CHeap(CHeap&&) = default;
  CHeap& operator=(CHeap&&) = default;

  /// Keeps a clone of `element` under `key`; a later element of the same key replaces an earlier one.
  void Store(std::string_view key, const libebml::EbmlElement& element);
  void Clear() { m_elements.clear(); }

  /// The element under `key`, or null. The table keeps ownership.
  const libebml::EbmlElement* Find(std::string_view key) const;

  std::optional<std::uint64_t> Unsigned(std::string_view key) const;
  std::optional<double> Float(std::string_view key) const;
  std::optional<std::string> String(std::string_view key) const;                    ///< narrow text as stored
  std::optional<WideString> Text(std::string_view key) const;                       ///< Unicode text
  std::optional<std::span<const std::uint8_t>> Binary(std::string_view key) const;  ///< view into the element

 private:
  std::map<std::string, std::shared_ptr<const libebml::EbmlElement>, std::less<>> m_elements;
};

}  // namespace tarvex
