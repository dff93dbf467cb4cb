// The language table as generated, and its lookups.
#include "pins/creator/language_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>

namespace tarvex::test {
namespace {

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

TEST(LanguageTable, HasEveryCodeOnce) {
  std::set<std::string_view> codes;
  for (const LanguageRow& row : LanguageTable()) codes.insert(row.code);
  EXPECT_EQ(LanguageTable().size(), 507u);
  EXPECT_EQ(codes.size(), 507u);
}

TEST(LanguageTable, IsInOrderOfTheEnglishName) {
  const auto before = [](const LanguageRow& a, const LanguageRow& b) {
    return Lower(a.englishName) < Lower(b.englishName);
  };
  EXPECT_TRUE(std::ranges::is_sorted(LanguageTable(), before));
}

void ExpectRow(const LanguageRow& row, std::string_view english, std::string_view french, std::string_view code,
               std::string_view alpha2) {
  EXPECT_EQ(row.englishName, english);
  EXPECT_EQ(row.shownName, english);
  EXPECT_EQ(row.frenchName, french);
  EXPECT_EQ(row.code, code);
  EXPECT_EQ(row.alpha2, alpha2);
}

TEST(LanguageTable, FirstAndLastRow) {
  ExpectRow(LanguageTable().front(), "Abkhazian", "abkhaze", "abk", "ab");
  ExpectRow(LanguageTable().back(), "Zuni", "zuni", "zun", "");
}

TEST(LanguageTable, BibliographicCodeStandsBeforeTerminologyCode) {
  const auto row = std::ranges::find(LanguageTable(), "ger", &LanguageRow::code);
  ExpectRow(row[0], "German", "allemand", "ger", "de");
  ExpectRow(row[1], "German", "allemand", "deu", "de");
}

TEST(LanguageTable, TextIsInCodePage1252) {
  const auto french = std::ranges::find(LanguageTable(), "fra", &LanguageRow::code);
  ExpectRow(*french, "French", "fran\347ais", "fra", "fr");
  const auto unknown = std::ranges::find(LanguageTable(), "und", &LanguageRow::code);
  EXPECT_EQ(unknown->frenchName, "ind\351termin\351e");
  EXPECT_EQ(LanguageName("nob"), "Norwegian Bokm\345l");
}

TEST(LanguageTable, NamesHaveNoAlternativesOrBlanks) {
  for (const LanguageRow& row : LanguageTable()) {
    for (const std::string_view name : {row.englishName, row.frenchName}) {
      ASSERT_FALSE(name.empty()) << row.code;
      EXPECT_EQ(name.find_first_of(";\r\n?"), std::string_view::npos) << row.code;
      EXPECT_FALSE(name.front() == ' ' || name.back() == ' ') << row.code;
    }
  }
}

TEST(LanguageName, OfBothKindsOfCode) {
  EXPECT_EQ(LanguageName("deu"), "German");
  EXPECT_EQ(LanguageName("ger"), "German");
  EXPECT_EQ(LanguageName("spa"), "Spanish");
  EXPECT_EQ(LanguageName("und"), "Undetermined");
}

TEST(LanguageName, OtherSpellingsAreNotFound) {
  for (const char* code : {"de", "GER", "ger-AT", "ge", "gerx", "", "xxx"}) EXPECT_EQ(LanguageName(code), "") << code;
}

TEST(LanguageCode, IsTheBibliographicOne) {
  EXPECT_EQ(LanguageCode("German"), "ger");
  EXPECT_EQ(LanguageCode("French"), "fre");
  EXPECT_EQ(LanguageCode("English"), "eng");
  EXPECT_EQ(LanguageCode("Spanish"), "spa");
}

TEST(LanguageCode, OtherNamesAreNotFound) {
  for (const char* name : {"german", "Deutsch", "", "Spanish; Castilian", "German "}) {
    EXPECT_EQ(LanguageCode(name), "") << name;
  }
}

}  // namespace
}  // namespace tarvex::test
