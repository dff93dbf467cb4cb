// Times as people read them. Free functions over values; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "framework/media_time.h"

namespace tarvex::host {

/// 100 ns units to "H:MM:SS.mmm", cut to milliseconds; "-0:00:00.100" before zero, "open" for kOpenTime.
std::string TimeText(std::int64_t time);

/// The reverse, in 100 ns units: "H:MM:SS.mmm", or seconds as in "90" and "90.5". The part after the point
/// may be absent or have up to seven digits. Nothing for any other text, a sign included.
std::optional<std::int64_t> ParseTime(std::string_view text);

}  // namespace tarvex::host
