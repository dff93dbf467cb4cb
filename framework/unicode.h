// Steps of walking over UTF-8 and UTF-16, and of writing them. Free functions over values; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "framework/text_conversion.h"

namespace tarvex {

/// Stands for what is ill-formed.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

struct Utf8Step {
  char32_t character = 0;
  std::size_t length = 1;  ///< bytes taken; 1 when the first byte begins nothing valid
  bool valid = false;
};

/// The first character of `text`, which must not be empty. Overlong forms, surrogates and values above
/// U+10FFFF are not valid.
Utf8Step ReadUtf8(std::string_view text);

/// The same, but surrogates count as characters: file names of the system may hold a lone one.
Utf8Step ReadGeneralisedUtf8(std::string_view text);

struct Utf16Step {
  char32_t character = 0;  ///< a lone surrogate as it is
  std::size_t length = 1;  ///< units taken
};

/// The first character of `text`, which must not be empty.
Utf16Step ReadUtf16(WideView text);

/// A half of a pair in UTF-16, and no character of its own.
bool IsSurrogate(char32_t character);

void AppendUtf8(std::string& text, char32_t character);
void AppendUtf16(WideString& text, char32_t character);

}  // namespace tarvex
