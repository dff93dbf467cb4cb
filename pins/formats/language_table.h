// The languages of ISO 639-2 and two lookups over them. Read-only data made from data/iso639-2.csv when
// the project is built; callable from any thread.
#pragma once

#include <span>
#include <string_view>

namespace tarvex {

/// One three-letter code. A language with a bibliographic and a terminology code has two adjacent rows,
/// the bibliographic one first. Rows stand in alphabetical order of the English name. Where several
/// names are published, the first one is given; text is in code page 1252.
struct LanguageRow {
  std::string_view englishName;
  std::string_view shownName;  ///< the English name once more
  std::string_view frenchName;
  std::string_view code;    ///< three letters, or the range "qaa-qtz"
  std::string_view alpha2;  ///< two letters, or empty
};

std::span<const LanguageRow> LanguageTable() noexcept;

/// English name of a three-letter code, compared exactly; empty when it is in no row.
std::string_view LanguageName(std::string_view code) noexcept;

/// Three-letter code of the first row with this English name, or of the language that has it among its other published
/// names ("Punjabi", "Modern Greek") or is called so by locales ("Greek"); compared exactly. Empty when there is none.
std::string_view LanguageCode(std::string_view englishName) noexcept;

}  // namespace tarvex
