// Media types of subtitle tracks: every row byte for byte.
#include "pins/creator/subtitle_media_type.h"

#include <gtest/gtest.h>

#include "tests/pins_creator/block_writer.h"
#include "tests/pins_creator/log_texts.h"
#include "tests/pins_creator/track_builder.h"

namespace tarvex::test {
namespace {

constexpr char kFormat[] = "A33D2F7D-96BC-4337-B23B-A8B9FBC295E9";

struct SubtitleCase {
  const char* codecId;
  const char* subtype;
  bool known = true;
};

class SubtitleRows : public testing::TestWithParam<SubtitleCase> {};

TEST_P(SubtitleRows, CarryLanguageAndPrivate) {
  const LogTexts log;
  for (const std::size_t size : {0u, 1u, 300u}) {
    const Block block = Block(520 + size).Text(4, "ger").Data(520, CountingBytes(size));
    ExpectType(SubtitleMediaType(TrackBuilder(3, 17, GetParam().codecId).Private(CountingBytes(size)), "ger"),
               {kSubtitle, GetParam().subtype, kFormat, block.Bytes()});
  }
  EXPECT_EQ(log.Texts(), std::vector<std::string>(GetParam().known ? 0 : 3, "Unknown Subtitle codecIdStr"));
}

INSTANTIATE_TEST_SUITE_P(SubtitleMediaType, SubtitleRows,
                         testing::Values(SubtitleCase{"S_TEXT/UTF8", "87C0B230-03A8-4FDF-8010-B27A5848200D"},
                                         SubtitleCase{"S_TEXT/SSA", "3020560F-255A-4DDC-806E-6C5CC6DCD70A"},
                                         SubtitleCase{"S_TEXT/ASS", "326444F7-686F-47FF-A4B2-C8C96307B4C2"},
                                         SubtitleCase{"S_TEXT/USF", "B753B29A-0A96-45BE-985F-68351D9CAB90"},
                                         SubtitleCase{"S_VOBSUB", "F7239E31-9599-4E43-8DD5-FBAF75CF37F1"},
                                         SubtitleCase{"S_HDMV/PGS", kNullGuid},
                                         SubtitleCase{"S_TEXT/WEBVTT", kNullGuid, false},
                                         SubtitleCase{"s_text/utf8", kNullGuid, false},
                                         SubtitleCase{"", kNullGuid, false}));

TEST(SubtitleMediaType, AsciiIsTextWithoutABlock) {
  const LogTexts log;
  ExpectType(SubtitleMediaType(TrackBuilder(3, 17, "S_TEXT/ASCII").Private({1, 2}), "eng"),
             {"73747874-0000-0010-8000-00AA00389B71", kNullGuid, kNullGuid, {}});
  EXPECT_TRUE(log.Texts().empty());
}

TEST(SubtitleMediaType, NoIdentifierIsTheMajorTypeAlone) {
  ExpectType(SubtitleMediaType(TrackBuilder().Number(3).Type(17).Private({1, 2}), "eng"),
             {kSubtitle, kNullGuid, kNullGuid, {}});
}

TEST(SubtitleMediaType, LanguageIsThreeBytesAtMost) {
  const std::pair<const char*, const char*> languages[] = {
      {"", ""}, {"d", "d"}, {"de", "de"}, {"ger", "ger"}, {"ger-AT", "ger"}};
  for (const auto& [language, letters] : languages) {
    ExpectType(SubtitleMediaType(TrackBuilder(3, 17, "S_HDMV/PGS"), language),
               {kSubtitle, kNullGuid, kFormat, Block(520).Text(4, letters).Bytes()});
  }
}

}  // namespace
}  // namespace tarvex::test
