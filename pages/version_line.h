// The line of the about page that names the version. A free function; any thread.
#pragma once

#include "framework/text_conversion.h"

namespace tarvex {

/// "Version " and the four parts of the file version in the module's version resource; empty when the
/// module has none.
WideString VersionLine(HMODULE module);

}  // namespace tarvex
