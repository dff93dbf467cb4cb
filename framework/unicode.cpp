#include "framework/unicode.h"

#include <bit>

namespace tarvex {

namespace {

constexpr char32_t kHighSurrogates = 0xD800;
constexpr char32_t kLowSurrogates = 0xDC00;
constexpr char32_t kBehindSurrogates = 0xE000;
constexpr char32_t kFirstPair = 0x10000;

}  // namespace

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
  return IsSurrogate(step.character) ? Utf8Step{} : step;
}

Utf16Step ReadUtf16(WideView text) {
  const char32_t first = static_cast<char16_t>(text.front());
  if (first < kHighSurrogates || first >= kLowSurrogates || text.size() < 2) return {first, 1};
  const char32_t second = static_cast<char16_t>(text[1]);
  if (second < kLowSurrogates || second >= kBehindSurrogates) return {first, 1};
  return {kFirstPair + ((first - kHighSurrogates) << 10) + (second - kLowSurrogates), 2};
}

bool IsSurrogate(char32_t character) { return character >= kHighSurrogates && character < kBehindSurrogates; }

void AppendUtf8(std::string& text, char32_t character) {
  const auto put = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
  if (character < 0x80) return put(character);
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else {
    if (character < kFirstPair) {
      put(0xE0 | character >> 12);
    } else {
      put(0xF0 | character >> 18);
      put(0x80 | (character >> 12 & 0x3F));
    }
    put(0x80 | (character >> 6 & 0x3F));
  }
  put(0x80 | (character & 0x3F));
}

void AppendUtf16(WideString& text, char32_t character) {
  if (character < kFirstPair) {
    text += static_cast<OLECHAR>(character);
    return;
  }
  text += static_cast<OLECHAR>(kHighSurrogates + ((character - kFirstPair) >> 10));
  text += static_cast<OLECHAR>(kLowSurrogates + ((character - kFirstPair) & 0x3FF));
}

}  // namespace tarvex
