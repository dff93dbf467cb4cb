#include "pages/chapter_line.h"

#include <cstdint>

namespace tarvex {

namespace {

WideString TwoDigits(std::uint32_t number) {
  const WideString digits = std::to_wstring(number);
  return number < 10 ? L'0' + digits : digits;
}

WideString TimeText(LONGLONG time) {
  constexpr LONGLONG kUnitsPerMillisecond = 10000;
  const auto milliseconds = static_cast<std::uint32_t>(time / kUnitsPerMillisecond);
  const std::uint32_t secondsOfHour = milliseconds / 1000 % 3600;
  return TwoDigits(milliseconds / 3600000) + L':' + TwoDigits(secondsOfHour / 60) + L':' +
         TwoDigits(secondsOfHour % 60);
}

}  // namespace

WideString ChapterLine(WideView name, LONGLONG start, LONGLONG end) {
  return WideString(name) + L" - (" + TimeText(start) + L" - " + TimeText(end) + L')';
}

}  // namespace tarvex
