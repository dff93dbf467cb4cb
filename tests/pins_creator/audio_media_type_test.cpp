// Media types of audio tracks: every row byte for byte, and what stands in for missing elements.
#include "pins/creator/audio_media_type.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/pins_creator/block_writer.h"
#include "tests/pins_creator/log_texts.h"
#include "tests/pins_creator/track_builder.h"

namespace tarvex::test {
namespace {

constexpr char kFormatWave[] = "05589F81-C356-11CE-BF01-00AA0055595A";
constexpr char kVorbis[] = "8D2FD10B-5841-4A6B-8905-588FEC1ADED9";
constexpr char kFormatVorbis[] = "B36E107F-A938-4387-93C7-55E966757473";

TrackBuilder Sound(const std::string& codecId) { return TrackBuilder(1, 2, codecId).Rate(48000).Channels(6).Depth(24); }

// Six channels at 48000 Hz.
Block Wave(std::uint16_t tag, const ByteVector& appended = {}) {
  return Block(18 + appended.size()).U16(0, tag).U16(2, 6).U32(4, 48000).U16(16, appended.size()).Data(18, appended);
}

struct PlainRow {
  const char* codecId;
  std::uint16_t tag;
  const char* subtype;
};

class PlainRows : public testing::TestWithParam<PlainRow> {};

TEST_P(PlainRows, HaveSampleLayoutAndNoPrivate) {
  const PlainRow& row = GetParam();
  const Block block = Wave(row.tag).U16(12, 18).U16(14, 24);
  ExpectType(AudioMediaType(Sound(row.codecId).Private({1, 2, 3})), {kAudio, row.subtype, kFormatWave, block.Bytes()});
}

INSTANTIATE_TEST_SUITE_P(AudioMediaType, PlainRows,
                         testing::Values(PlainRow{"A_AC3", 0x2000, "00002000-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_EAC3", 0x2000, "00002000-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_TRUEHD", 0, "EB27CEC4-163E-4CA3-8B74-8E25F91B517E"},
                                         PlainRow{"A_MPEG/L3", 0x0055, "00000055-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_MPEG/L2", 0x0050, "00000050-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_MPEG/L1", 0x0050, "00000050-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_DTS", 0x2001, "00002001-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_PCM/INT/LIT", 0x0001, "00000001-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_PCM/FLOAT/IEEE", 0x0003, "00000003-0000-0010-8000-00AA00389B71"}));

class RowsWithPrivate : public testing::TestWithParam<PlainRow> {};

TEST_P(RowsWithPrivate, AppendIt) {
  const PlainRow& row = GetParam();
  for (const std::size_t size : {1u, 22u, 1000u}) {
    ExpectType(AudioMediaType(Sound(row.codecId).Private(CountingBytes(size))),
               {kAudio, row.subtype, kFormatWave, Wave(row.tag, CountingBytes(size)).Bytes()});
  }
}

TEST_P(RowsWithPrivate, AppendNothingWithoutIt) {
  const PlainRow& row = GetParam();
  const Expected expected{kAudio, row.subtype, kFormatWave, Wave(row.tag).Bytes()};
  ExpectType(AudioMediaType(Sound(row.codecId)), expected);
  ExpectType(AudioMediaType(Sound(row.codecId).Private({})), expected);
}

INSTANTIATE_TEST_SUITE_P(AudioMediaType, RowsWithPrivate,
                         testing::Values(PlainRow{"A_TTA1", 0x77A1, "000077A1-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_WAVPACK4", 0x5756, "00005756-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_FLAC", 0xF1AC, "1541C5C0-CDDF-477D-BC0A-86F8AE7F8354"},
                                         PlainRow{"A_REAL/14_4", 0x2002, "00002002-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_REAL/28_8", 0x2003, "00002003-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_REAL/COOK", 0x2004, "00002004-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_REAL/SIPR", 0x0130, "00000130-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_REAL/ATRC", 0x0270, "00000270-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_REAL/RALF", 0, "00000000-0000-0010-8000-00AA00389B71"},
                                         PlainRow{"A_REALX", 0, "00000000-0000-0010-8000-00AA00389B71"}));

TEST(AudioMediaType, AacHasPrivateAndSampleLayout) {
  const Block block = Wave(0x00FF, {0x11, 0x90, 0x56}).U16(12, 18).U16(14, 24);
  const char* const subtype = "000000FF-0000-0010-8000-00AA00389B71";
  ExpectType(AudioMediaType(Sound("A_AAC").Private({0x11, 0x90, 0x56})), {kAudio, subtype, kFormatWave, block.Bytes()});
  const Block bare = Wave(0x00FF).U16(12, 18).U16(14, 24);
  ExpectType(AudioMediaType(Sound("A_AAC")), {kAudio, subtype, kFormatWave, bare.Bytes()});
}

TEST(AudioMediaType, VorbisHeadersFollowTheirSizes) {
  const ByteVector laced = {2, 3, 2, 'i', 'd', '1', 'c', '2', 's', 'e', 't', 'u'};
  const Block block = Block(24 + 9).U32(0, 6).U32(4, 48000).U32(12, 3).U32(16, 2).U32(20, 4).Text(24, "id1c2setu");
  ExpectType(AudioMediaType(Sound("A_VORBIS").Private(laced)), {kAudio, kVorbis, kFormatVorbis, block.Bytes()});
}

TEST(AudioMediaType, VorbisWithoutThreePacketsIsZeros) {
  const Block frame = Block(24 + 4).U32(0, 6).U32(4, 48000);
  for (const ByteVector& laced :
       {ByteVector{0, 1, 2, 3, 4}, ByteVector{1, 2, 1, 2, 3, 4}, ByteVector{3, 1, 1, 1, 1, 2, 3, 4}}) {
    ExpectType(AudioMediaType(Sound("A_VORBIS").Private(laced)), {kAudio, kVorbis, kFormatVorbis, frame.Bytes()});
  }
}

TEST(AudioMediaType, VorbisWithoutPrivateIsTheStructureAlone) {
  const Expected expected{kAudio, kVorbis, kFormatVorbis, Block(24).U32(0, 6).U32(4, 48000).Bytes()};
  ExpectType(AudioMediaType(Sound("A_VORBIS")), expected);
  ExpectType(AudioMediaType(Sound("A_VORBIS").Private({})), expected);
}

TEST(AudioMediaType, DamagedVorbisLacingCountsAsNoHeaders) {
  const Expected expected{kAudio, kVorbis, kFormatVorbis, Block(24).U32(0, 6).U32(4, 48000).Bytes()};
  for (const ByteVector& laced : {ByteVector{2}, ByteVector{2, 255, 255}, ByteVector{2, 3, 2, 'i'}, ByteVector{9, 0}}) {
    const LogTexts log;
    ExpectType(AudioMediaType(Sound("A_VORBIS").Private(laced)), expected);
    EXPECT_EQ(log.Texts().size(), 1u);
  }
}

TEST(AudioMediaType, AcmPrivateIsTheBlock) {
  const ByteVector format =
      Block(30).U16(0, 0x0161).U16(2, 2).U32(4, 44100).U16(16, 12).Data(18, CountingBytes(12)).Bytes();
  ExpectType(AudioMediaType(Sound("A_MS/ACM").Private(format)),
             {kAudio, "00000161-0000-0010-8000-00AA00389B71", kFormatWave, format});
}

TEST(AudioMediaType, AcmPrivateOfSixteenBytesGetsItsLastField) {
  const Block format = Block(18).U16(0, 1).U16(2, 2).U32(4, 44100).U32(8, 176400).U16(12, 4).U16(14, 16);
  const ByteVector old(format.Bytes().begin(), format.Bytes().begin() + 16);
  ExpectType(AudioMediaType(Sound("A_MS/ACM").Private(old)),
             {kAudio, "00000001-0000-0010-8000-00AA00389B71", kFormatWave, format.Bytes()});
}

TEST(AudioMediaType, ShorterAcmPrivateIsTheMajorTypeAlone) {
  const Expected expected{kAudio, kNullGuid, kNullGuid, {}};
  ExpectType(AudioMediaType(Sound("A_MS/ACM")), expected);
  for (std::size_t size = 0; size < 18; ++size) {
    if (size != 16) ExpectType(AudioMediaType(Sound("A_MS/ACM").Private(CountingBytes(size))), expected);
  }
}

TEST(AudioMediaType, UnknownIdentifierIsLoggedAndKept) {
  for (const char* codecId : {"A_REAL", "A_AAC/MPEG4/LC", "A_OPUS", "A_AC3/BSID9", "a_ac3", "A_MS/ACMX"}) {
    const LogTexts log;
    ExpectType(AudioMediaType(Sound(codecId).Private(CountingBytes(30))), {kAudio, kNullGuid, kNullGuid, {}});
    EXPECT_EQ(log.Texts(), std::vector<std::string>{"undefined codec_idStr"}) << codecId;
  }
}

TEST(AudioMediaType, EmptyIdentifierIsNotLogged) {
  const LogTexts log;
  ExpectType(AudioMediaType(Sound("")), {kAudio, kNullGuid, kNullGuid, {}});
  ExpectType(AudioMediaType(TrackBuilder().Number(1).Type(2)), {kAudio, kNullGuid, kNullGuid, {}});
  EXPECT_TRUE(log.Texts().empty());
}

TEST(AudioMediaType, FormatDefaultsStandInForMissingElements) {
  const Block block = Block(18).U16(0, 1).U16(2, 1).U32(4, 8000);
  ExpectType(AudioMediaType(TrackBuilder(1, 2, "A_PCM/INT/LIT")),
             {kAudio, "00000001-0000-0010-8000-00AA00389B71", kFormatWave, block.Bytes()});
}

TEST(AudioMediaType, RateIsCutToAWholeNumber) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::pair<double, DWORD> rates[] = {{44100.7, 44100},
                                            {47999.9999, 48000},
                                            {0.9, 0},
                                            {0.0, 0},
                                            {-5.0, 0},
                                            {-infinity, 0},
                                            {infinity, 0xFFFFFFFF},
                                            {1e300, 0xFFFFFFFF},
                                            {5e9, 0xFFFFFFFF},
                                            {4294967295.0, 0xFFFFFFFF},
                                            {4294967294.0, 0xFFFFFFFF},
                                            {std::numeric_limits<double>::quiet_NaN(), 0}};
  for (const auto& [rate, expected] : rates) {
    const CMediaType type = AudioMediaType(Sound("A_AC3").Rate(rate));
    EXPECT_EQ(type.FormatAs<WAVEFORMATEX>()->nSamplesPerSec, expected) << rate;
  }
}

TEST(AudioMediaType, SampleLayoutIsOfSixteenBitNumbers) {
  const CMediaType type = AudioMediaType(Sound("A_AC3").Channels(0x1FFFF).Depth(0x1FFFF));
  EXPECT_EQ(type.FormatAs<WAVEFORMATEX>()->nChannels, 0xFFFF);
  EXPECT_EQ(type.FormatAs<WAVEFORMATEX>()->wBitsPerSample, 0xFFFF);
  EXPECT_EQ(type.FormatAs<WAVEFORMATEX>()->nBlockAlign, 0xC000);
}

TEST(AudioMediaType, LargePrivateIsKeptWhole) {
  const CMediaType type = AudioMediaType(Sound("A_FLAC").Private(CountingBytes(70000)));
  EXPECT_EQ(type.cbFormat, 70018u);
  EXPECT_EQ(type.FormatAs<WAVEFORMATEX>()->cbSize, 0xFFFF);
  EXPECT_EQ(Hex(type.FormatBytes().subspan(18)), Hex(CountingBytes(70000)));
}

}  // namespace
}  // namespace tarvex::test
