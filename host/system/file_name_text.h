// File names from the system's wide text to narrow text and back, without loss even for names that are not well-formed
// UTF-16. Free functions over values; any thread.
#pragma once

#include <string>
#include <string_view>

#include "framework/text_conversion.h"

namespace tarvex::host {

/// UTF-8, in which a lone surrogate becomes the three bytes of its value.
std::string NarrowFileName(WideView name);

/// The reverse. Bytes that NarrowFileName never writes become U+FFFD.
WideString WideFileName(std::string_view name);

}  // namespace tarvex::host
