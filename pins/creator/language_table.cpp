// The table's rows, generated when the project is built, and the lookups. Constant data; any thread.
#include "pins/creator/language_table.h"

#include <algorithm>

namespace tarvex {

namespace {

constexpr LanguageRow kLanguageRows[] = {
#include "pins/creator/language_rows.inc"
};

}  // namespace

std::span<const LanguageRow> LanguageTable() noexcept { return kLanguageRows; }

std::string_view LanguageName(std::string_view code) noexcept {
  const auto* row = std::ranges::find(kLanguageRows, code, &LanguageRow::code);
  return row == std::end(kLanguageRows) ? std::string_view() : row->englishName;
}

std::string_view LanguageCode(std::string_view englishName) noexcept {
  const auto* row = std::ranges::find(kLanguageRows, englishName, &LanguageRow::englishName);
  return row == std::end(kLanguageRows) ? std::string_view() : row->code;
}

}  // namespace tarvex
