#include "host/report/time_text.h"

#include <fmt/format.h>

namespace tarvex::host {

namespace {

constexpr std::size_t kFractionDigits = 7;  // of a second in 100 ns units
constexpr std::size_t kMostDigits = 8;      // of hours or seconds, so that no time is too large

std::optional<std::int64_t> Number(std::string_view digits, std::size_t most) {
  if (digits.empty() || digits.size() > most) return std::nullopt;
  std::int64_t value = 0;
  for (const char digit : digits) {
    if (digit < '0' || digit > '9') return std::nullopt;
    value = value * 10 + (digit - '0');
  }
  return value;
}

std::optional<std::int64_t> Fraction(std::string_view digits) {
  auto value = Number(digits, kFractionDigits);
  for (std::size_t i = digits.size(); value && i < kFractionDigits; ++i) *value *= 10;
  return value;
}

std::optional<std::int64_t> WholeSeconds(std::string_view text) {
  if (text.find(':') == std::string_view::npos) return Number(text, kMostDigits);
  const std::size_t size = text.size();
  if (size < 7 || text[size - 3] != ':' || text[size - 6] != ':') return std::nullopt;
  const auto hours = Number(text.substr(0, size - 6), kMostDigits);
  const auto minutes = Number(text.substr(size - 5, 2), 2);
  const auto seconds = Number(text.substr(size - 2), 2);
  if (!hours || !minutes || !seconds || *minutes > 59 || *seconds > 59) return std::nullopt;
  return (*hours * 60 + *minutes) * 60 + *seconds;
}

}  // namespace

std::string TimeText(std::int64_t time) {
  if (time == kOpenTime) return "open";
  // Negated as unsigned, since the least number has no positive counterpart.
  const std::uint64_t size = time < 0 ? 0 - static_cast<std::uint64_t>(time) : static_cast<std::uint64_t>(time);
  const std::uint64_t milliseconds = size / 10000;
  const std::uint64_t seconds = milliseconds / 1000;
  return fmt::format("{}{}:{:02}:{:02}.{:03}", time < 0 ? "-" : "", seconds / 3600, seconds / 60 % 60, seconds % 60,
                     milliseconds % 1000);
}

std::optional<std::int64_t> ParseTime(std::string_view text) {
  const std::size_t point = text.find('.');
  const auto seconds = WholeSeconds(text.substr(0, point));
  const auto fraction = point == std::string_view::npos ? 0 : Fraction(text.substr(point + 1));
  if (!seconds || !fraction) return std::nullopt;
  return *seconds * 10'000'000 + *fraction;
}

}  // namespace tarvex::host
