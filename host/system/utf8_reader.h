// One step of walking over UTF-8. A free function over values; any thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarvex::host {

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

}  // namespace tarvex::host
