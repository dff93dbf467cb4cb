// The language table as generated, and its lookups.
#include "pins/formats/language_table.h"

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

TEST(LanguageTable, HasEveryCodeOnceInOrderOfTheEnglishName) {
  std::set<std::string_view> codes;
  for (const LanguageRow& row : LanguageTable()) {
    codes.insert(row.code);
    for (const std::string_view name : {row.englishName, row.frenchName}) {
      ASSERT_FALSE(name.empty()) << row.code;
      EXPECT_EQ(name.find_first_of(";\r\n?"), std::string_view::npos) << row.code;
      EXPECT_FALSE(name.front() == ' ' || name.back() == ' ') << row.code;
    }
  }
  EXPECT_EQ(LanguageTable().size(), 507u);
  EXPECT_EQ(codes.size(), 507u);
  EXPECT_TRUE(std::ranges::is_sorted(LanguageTable(), {}, [](const auto& row) { return Lower(row.englishName); }));
}

TEST(LanguageTable, RowsAreInCodePage1252WithTheBibliographicCodeFirst) {
  const auto row = std::ranges::find(LanguageTable(), "fre", &LanguageRow::code);
  EXPECT_EQ(row->frenchName, "fran\347ais");
  EXPECT_EQ(row->shownName, "French");
  EXPECT_EQ(row->alpha2, "fr");
  EXPECT_EQ(std::next(row)->code, "fra");
  EXPECT_EQ(std::next(row)->frenchName, "fran\347ais");
}

TEST(LanguageTable, LookupsAreExact) {
  for (const auto& [code, name] :
       {std::pair{"deu", "German"}, {"ger", "German"}, {"spa", "Spanish"}, {"nob", "Norwegian Bokm\345l"}}) {
    EXPECT_EQ(LanguageName(code), name);
  }
  for (const char* code : {"de", "GER", "ger-AT", "ge", "gerx", "", "xxx"}) EXPECT_EQ(LanguageName(code), "") << code;
  for (const auto& [name, code] : {std::pair{"German", "ger"}, {"French", "fre"}, {"Spanish", "spa"}}) {
    EXPECT_EQ(LanguageCode(name), code);
  }
  for (const char* name : {"german", "Deutsch", "", "Spanish; Castilian", "German ", "Central", "Ancient"}) {
    EXPECT_EQ(LanguageCode(name), "") << name;
  }
}

TEST(LanguageTable, LanguagesAreFoundByTheirOtherNamesToo) {
  for (const auto& [name, code] : {std::pair{"Greek", "gre"},
                                   {"Modern Greek", "gre"},
                                   {"Modern Greek (1453-)", "gre"},
                                   {"Khmer", "khm"},
                                   {"Kyrgyz", "kir"},
                                   {"Kirghiz", "kir"},
                                   {"Punjabi", "pan"},
                                   {"Pashto", "pus"},
                                   {"Uyghur", "uig"},
                                   {"Castilian", "spa"},
                                   {"Flemish", "dut"}}) {
    EXPECT_EQ(LanguageCode(name), code) << name;
  }
}

}  // namespace
}  // namespace tarvex::test
