// UTF-8 and UTF-16, and the user's language.
#include "framework/text_conversion.h"

#include <atomic>
#include <optional>

#include "framework/platform/code_page.h"

namespace tarvex {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// A literal of the test that set it.
std::atomic<const char*> g_languageForTests{nullptr};

/// Bytes that the lead byte announces, 0 when it can lead nothing.
std::size_t SequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

/// The character at the start of `text` with its length, or nothing when the bytes are ill-formed.
std::optional<std::pair<char32_t, std::size_t>> DecodeUtf8(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t length = SequenceLength(byte(0));
  if (length == 0 || length > text.size()) return std::nullopt;
  if (length == 1) return std::pair{char32_t{byte(0)}, length};
  char32_t value = byte(0) & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0u) != 0x80u) return std::nullopt;
    value = (value << 6) | (byte(i) & 0x3Fu);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (value < kSmallest[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return std::nullopt;
  return std::pair{value, length};
}

void AppendUtf16(WideString& wide, char32_t c) {
  if (c < 0x10000) {
    wide.push_back(static_cast<OLECHAR>(c));
    return;
  }
  const char32_t rest = c - 0x10000;
  wide.push_back(static_cast<OLECHAR>(0xD800 + (rest >> 10)));
  wide.push_back(static_cast<OLECHAR>(0xDC00 + (rest & 0x3FF)));
}

void AppendUtf8(std::string& narrow, char32_t c) {
  const auto push = [&](char32_t byte) { narrow.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
  if (c < 0x80) {
    push(c);
  } else if (c < 0x800) {
    push(0xC0 | (c >> 6));
    push(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    push(0xE0 | (c >> 12));
    push(0x80 | ((c >> 6) & 0x3F));
    push(0x80 | (c & 0x3F));
  } else {
    push(0xF0 | (c >> 18));
    push(0x80 | ((c >> 12) & 0x3F));
    push(0x80 | ((c >> 6) & 0x3F));
    push(0x80 | (c & 0x3F));
  }
}

bool IsHighSurrogate(OLECHAR c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(OLECHAR c) { return c >= 0xDC00 && c <= 0xDFFF; }

}  // namespace

WideString WideFromUtf8(std::string_view text) {
  WideString wide;
  wide.reserve(text.size());
  while (!text.empty()) {
    const auto decoded = DecodeUtf8(text);
    AppendUtf16(wide, decoded ? decoded->first : kReplacement);
    text.remove_prefix(decoded ? decoded->second : 1);
  }
  return wide;
}

std::string Utf8FromWide(WideView text) {
  std::string narrow;
  narrow.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const OLECHAR c = text[i];
    if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      const char32_t high = static_cast<char32_t>(c) - 0xD800;
      const char32_t low = static_cast<char32_t>(text[++i]) - 0xDC00;
      AppendUtf8(narrow, 0x10000 + (high << 10) + low);
    } else {
      AppendUtf8(narrow, IsHighSurrogate(c) || IsLowSurrogate(c) ? kReplacement : static_cast<char32_t>(c));
    }
  }
  return narrow;
}

WideString WideFromThreadCodePage(std::string_view text) { return SystemWideFromNarrow(text); }

std::string UserLanguageEnglishName() {
  const char* replaced = g_languageForTests;
  return replaced != nullptr ? std::string(replaced) : SystemUserLanguage();
}

void OverrideUserLanguageForTests(const char* englishName) { g_languageForTests = englishName; }

}  // namespace tarvex
