// Code page 1252 stands in for the thread's code page where there is none.
#include "framework/platform/code_page.h"

#include <array>

namespace tarvex {

namespace {

// What 0x80 to 0x9F mean; the five bytes without a meaning map to themselves, as Windows maps them.
constexpr std::array<OLECHAR, 32> kUpperControls = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

WideString SystemWideFromNarrow(std::string_view text) {
  WideString wide;
  wide.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    wide.push_back(byte >= 0x80 && byte <= 0x9F ? kUpperControls[byte - 0x80u] : static_cast<OLECHAR>(byte));
  }
  return wide;
}

std::string SystemUserLanguage() { return "English"; }

}  // namespace tarvex
