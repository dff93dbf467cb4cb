#include "host/system/utf8_reader.h"

#include <bit>

namespace tarvex::host {

Utf8Step ReadGeneralisedUtf8(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x80) return {first, 1, true};
  const int length = std::countl_one(first);
  if (length < 2 || length > 4 || text.size() < static_cast<std::size_t>(length)) return {};
  char32_t character = first & (0x7Fu >> length);
  for (int i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[static_cast<std::size_t>(i)]);
    if ((next & 0xC0) != 0x80) return {};
    character = character << 6 | (next & 0x3Fu);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  if (character < kLeast[length] || character > 0x10FFFF) return {};
  return {character, static_cast<std::size_t>(length), true};
}

Utf8Step ReadUtf8(std::string_view text) {
  const Utf8Step step = ReadGeneralisedUtf8(text);
  if (step.character >= 0xD800 && step.character <= 0xDFFF) return {};
  return step;
}

}  // namespace tarvex::host
