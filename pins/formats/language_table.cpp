// The table's rows, generated when the project is built, and the lookups. Constant data; any thread.
#include "pins/formats/language_table.h"

#include <algorithm>

namespace tarvex {

namespace {

constexpr LanguageRow kLanguageRows[] = {
#include "pins/formats/language_rows.inc"
};

struct OtherName {
  std::string_view name;
  std::string_view code;
};

constexpr OtherName kOtherNames[] = {
#include "pins/formats/language_other_names.inc"
};

}  // namespace

std::span<const LanguageRow> LanguageTable() noexcept { return kLanguageRows; }

std::string_view LanguageName(std::string_view code) noexcept {
  const auto* row = std::ranges::find(kLanguageRows, code, &LanguageRow::code);
  return row == std::end(kLanguageRows) ? std::string_view() : row->englishName;
}

std::string_view LanguageCode(std::string_view englishName) noexcept {
  const auto* row = std::ranges::find(kLanguageRows, englishName, &LanguageRow::englishName);
  if (row != std::end(kLanguageRows)) return row->code;
  const auto* other = std::ranges::find(kOtherNames, englishName, &OtherName::name);
  return other == std::end(kOtherNames) ? std::string_view() : other->code;
}

}  // namespace tarvex
