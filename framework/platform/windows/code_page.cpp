// Narrow text and the user's language from the system.
#include "framework/platform/code_page.h"

#include <algorithm>
#include <array>
#include <limits>

namespace tarvex {

WideString SystemWideFromNarrow(std::string_view text) {
  if (text.empty()) return {};
  const int length = static_cast<int>(std::min<std::size_t>(text.size(), std::numeric_limits<int>::max()));
  const int needed = MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), length, nullptr, 0);
  WideString wide(static_cast<std::size_t>(std::max(needed, 0)), OLECHAR{});
  const int written = MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), length, wide.data(), needed);
  wide.resize(static_cast<std::size_t>(std::max(written, 0)));
  return wide;
}

std::string SystemUserLanguage() {
  std::array<wchar_t, 255> name{};
  const int length =
      GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SENGLANGUAGE, name.data(), static_cast<int>(name.size()));
  if (length <= 1) return {};
  std::array<char, 2 * 255> narrow{};
  // Without the terminating zero, which the length counts.
  const int written = WideCharToMultiByte(CP_THREAD_ACP, 0, name.data(), length - 1, narrow.data(),
                                          static_cast<int>(narrow.size()), nullptr, nullptr);
  return {narrow.data(), static_cast<std::size_t>(std::max(written, 0))};
}

}  // namespace tarvex
