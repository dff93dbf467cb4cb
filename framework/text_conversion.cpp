// Whole texts, and the user's language.
#include "framework/text_conversion.h"

#include <atomic>

#include "framework/platform/code_page.h"
#include "framework/unicode.h"

namespace tarvex {

namespace {

// A literal of the test that set it.
std::atomic<const char*> g_languageForTests{nullptr};

}  // namespace

WideString WideFromUtf8(std::string_view text) {
  WideString wide;
  wide.reserve(text.size());
  while (!text.empty()) {
    const Utf8Step step = ReadUtf8(text);
    AppendUtf16(wide, step.valid ? step.character : kReplacementCharacter);
    text.remove_prefix(step.length);
  }
  return wide;
}

std::string Utf8FromWide(WideView text) {
  std::string narrow;
  narrow.reserve(text.size());
  while (!text.empty()) {
    const Utf16Step step = ReadUtf16(text);
    AppendUtf8(narrow, IsSurrogate(step.character) ? kReplacementCharacter : step.character);
    text.remove_prefix(step.length);
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
