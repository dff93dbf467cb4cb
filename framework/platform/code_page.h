// The system's part of narrow text: the thread's code page and the user's language. Free functions; any thread.
#pragma once

#include <string>

#include "framework/text_conversion.h"

namespace tarvex {

/// From the calling thread's code page.
WideString SystemWideFromNarrow(std::string_view text);

/// English name of the user's language in the thread's code page; empty when unknown.
std::string SystemUserLanguage();

}  // namespace tarvex
