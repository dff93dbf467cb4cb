#include "host/system/file_name_text.h"

#include "host/system/utf8_reader.h"

namespace tarvex::host {

namespace {

constexpr bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void AppendUtf8(std::string& out, char32_t c) {
  const auto put = [&out](char32_t byte) { out += static_cast<char>(static_cast<unsigned char>(byte)); };
  if (c < 0x80) {
    put(c);
    return;
  }
  if (c < 0x800) {
    put(0xC0 | c >> 6);
  } else {
    if (c < 0x10000) {
      put(0xE0 | c >> 12);
    } else {
      put(0xF0 | c >> 18);
      put(0x80 | (c >> 12 & 0x3F));
    }
    put(0x80 | (c >> 6 & 0x3F));
  }
  put(0x80 | (c & 0x3F));
}

}  // namespace

std::string NarrowFileName(WideView name) {
  std::string out;
  for (std::size_t i = 0; i < name.size(); ++i) {
    char32_t character = static_cast<char16_t>(name[i]);
    if (IsHighSurrogate(character) && i + 1 < name.size()) {
      const char32_t low = static_cast<char16_t>(name[i + 1]);
      if (IsLowSurrogate(low)) {
        character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
        ++i;
      }
    }
    AppendUtf8(out, character);
  }
  return out;
}

WideString WideFileName(std::string_view name) {
  WideString out;
  while (!name.empty()) {
    const Utf8Step step = ReadGeneralisedUtf8(name);
    const char32_t character = step.valid ? step.character : 0xFFFD;
    if (character >= 0x10000) {
      out += static_cast<OLECHAR>(0xD800 + ((character - 0x10000) >> 10));
      out += static_cast<OLECHAR>(0xDC00 + ((character - 0x10000) & 0x3FF));
    } else {
      out += static_cast<OLECHAR>(character);
    }
    name.remove_prefix(step.length);
  }
  return out;
}

}  // namespace tarvex::host
