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

// Languages have more than one name, and a code for each of two uses.
TEST(LanguageTable, LookupsAreExactAndInCodePage1252) {
  for (const auto& [code, name] :
       {std::pair{"deu", "German"}, {"ger", "German"}, {"spa", "Spanish"}, {"nob", "Norwegian Bokm\345l"}}) {
    EXPECT_EQ(LanguageName(code), name);
  }
  for (const char* code : {"de", "GER", "ger-AT", "gerx", ""}) EXPECT_EQ(LanguageName(code), "") << code;
  for (const auto& [name, code] : {std::pair{"German", "ger"},
                                   {"French", "fre"},
                                   {"Greek", "gre"},
                                   {"Modern Greek (1453-)", "gre"},
                                   {"Kyrgyz", "kir"},
                                   {"Castilian", "spa"}}) {
    EXPECT_EQ(LanguageCode(name), code) << name;
  }
  for (const char* name : {"german", "Deutsch", "", "Spanish; Castilian", "German ", "Central"}) {
    EXPECT_EQ(LanguageCode(name), "") << name;
  }
}

}  // namespace
}  // namespace tarvex::test
