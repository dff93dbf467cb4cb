// Times as people read them. Free functions over values; any thread.
#pragma once

#include <cstdint>
#include <string>

namespace tarvex::host {

/// An open stop time and an unknown duration, in the platform's 100 ns units.
inline constexpr std::int64_t kOpenTime = 0x7FFFFFFFFFFFFFFF;

/// 100 ns units to "H:MM:SS.mmm", cut to milliseconds; "-0:00:00.100" before zero, "open" for kOpenTime.
std::string TimeText(std::int64_t time);

}  // namespace tarvex::host
