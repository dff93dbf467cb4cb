#include "host/time_text.h"

#include <fmt/format.h>

namespace tarvex::host {

std::string TimeText(std::int64_t time) {
  if (time == kOpenTime) return "open";
  // Negated as unsigned, since the least number has no positive counterpart.
  const std::uint64_t size = time < 0 ? 0 - static_cast<std::uint64_t>(time) : static_cast<std::uint64_t>(time);
  const std::uint64_t milliseconds = size / 10000;
  const std::uint64_t seconds = milliseconds / 1000;
  return fmt::format("{}{}:{:02}:{:02}.{:03}", time < 0 ? "-" : "", seconds / 3600, seconds / 60 % 60, seconds % 60,
                     milliseconds % 1000);
}

}  // namespace tarvex::host
