// Conversions between narrow and wide text, and the one question about the user's language. Free
// functions, callable from any thread.
#pragma once

#include <string>
#include <string_view>

#include "framework/platform/platform.h"

namespace tarvex {

using WideString = std::basic_string<OLECHAR>;
using WideView = std::basic_string_view<OLECHAR>;

/// Ill-formed input becomes U+FFFD, one per offending byte or unit.
WideString WideFromUtf8(std::string_view text);
std::string Utf8FromWide(WideView text);

/// From the calling thread's narrow code page (1252 where the system has none).
WideString WideFromThreadCodePage(std::string_view text);

/// English name of the language of the user's locale ("German"), in the thread's code page; empty when
/// the system does not say.
std::string UserLanguageEnglishName();

/// Replaces the answer of UserLanguageEnglishName, for tests; null brings the system's back.
void OverrideUserLanguageForTests(const char* englishName);

}  // namespace tarvex
