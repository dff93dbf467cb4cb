// What the settings page writes for one chapter. A free function; any thread.
#pragma once

#include "framework/text_conversion.h"

namespace tarvex {

/// "Intro - (00:00:00 - 00:00:09)": times in 100 ns units, shown in whole seconds. Milliseconds are counted
/// in 32 bits, so from 49 days on a time begins anew.
WideString ChapterLine(WideView name, LONGLONG start, LONGLONG end);

}  // namespace tarvex
