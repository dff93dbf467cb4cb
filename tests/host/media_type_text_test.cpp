// Decoding of media types into fields, in particular of blocks that are short or lie about themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "framework/media_type.h"
#include "host/report/media_type_text.h"
#include "pins/formats/media_guids.h"

namespace tarvex::host {
namespace {

CMediaType TypeOf(const GUID& major, const GUID& subtype, const GUID& format, const std::vector<std::uint8_t>& block) {
  CMediaType type(major);
  type.subtype = subtype;
  type.formattype = format;
  std::ranges::copy(block, type.AllocFormatBuffer(static_cast<ULONG>(block.size())));
  return type;
}

template <class T>
void Put(std::vector<std::uint8_t>& block, std::size_t offset, T value) {
  std::memcpy(block.data() + offset, &value, sizeof value);
}

std::int64_t Number(const MediaTypeText& text, const std::string& name) {
  for (const FormatField& field : text.fields) {
    if (field.name == name) return std::get<std::int64_t>(field.value);
  }
  ADD_FAILURE() << "no field " << name;
  return 0;
}

std::string Words(const MediaTypeText& text, const std::string& name) {
  for (const FormatField& field : text.fields) {
    if (field.name == name) return std::get<std::string>(field.value);
  }
  ADD_FAILURE() << "no field " << name;
  return {};
}

/// One parameter set of 4 bytes and one of 2, as they follow an MPEG2VIDEOINFO.
std::vector<std::uint8_t> AvcBlock() {
  std::vector<std::uint8_t> block(132 + 10);
  Put<std::int64_t>(block, 40, 400000);  // AvgTimePerFrame
  Put<std::uint32_t>(block, 56, 16);     // aspect
  Put<std::uint32_t>(block, 60, 9);
  Put<std::uint32_t>(block, 72, 40);  // bmiHeader
  Put<std::int32_t>(block, 76, 640);
  Put<std::int32_t>(block, 80, 360);
  Put<std::uint16_t>(block, 86, 24);
  Put<std::uint32_t>(block, 88, FourCc("AVC1"));
  Put<std::uint32_t>(block, 116, 10);  // cbSequenceHeader
  Put<std::uint32_t>(block, 120, 100);
  Put<std::uint32_t>(block, 124, 31);
  Put<std::uint32_t>(block, 128, 4);
  const std::uint8_t sets[] = {0, 4, 0x67, 1, 2, 3, 0, 2, 0x68, 1};
  std::copy(std::begin(sets), std::end(sets), block.begin() + 132);
  return block;
}

MediaTypeText DescribeAvc(const std::vector<std::uint8_t>& block) {
  return DescribeMediaType(TypeOf(MEDIATYPE_Video, SubtypeOf(FourCc("AVC1")), FORMAT_MPEG2Video, block));
}

TEST(MediaTypeText, AvcBlockIsDecoded) {
  const MediaTypeText text = DescribeAvc(AvcBlock());
  EXPECT_EQ(Number(text, "parameter_sets"), 2);
  EXPECT_EQ(Words(text, "compression"), "AVC1");
  EXPECT_EQ(MediaTypeLine(text),
            "Video AVC1 (MPEG2VIDEOINFO): 640x360, 24 bits, 25.000 fps, aspect 16:9, profile 100, level 3.1, NAL "
            "length 4 bytes, 2 parameter sets, sequence header 10 bytes");
}

TEST(MediaTypeText, SetsAndHeadersMayClaimMoreThanThereIs) {
  std::vector<std::uint8_t> block = AvcBlock();
  Put<std::uint32_t>(block, 116, 0xFFFFFFFF);
  EXPECT_EQ(Number(DescribeAvc(block), "sequence_header_size"), 0xFFFFFFFF);
  EXPECT_EQ(Number(DescribeAvc(block), "parameter_sets"), 2);
  block[132 + 7] = 200;
  EXPECT_EQ(Number(DescribeAvc(block), "parameter_sets"), 1);
}

TEST(MediaTypeText, EveryShorterBlockIsReadWithinItsBounds) {
  const GUID* formats[] = {&FORMAT_VideoInfo,    &FORMAT_VideoInfo2, &FORMAT_MPEGVideo,   &FORMAT_MPEG2Video,
                           &FORMAT_WaveFormatEx, &kFormatVorbis2,    &kFormatSubtitleInfo};
  for (const GUID* format : formats) {
    for (std::size_t size = 0; size <= 600; ++size) {
      // Exactly as large as it claims, so that a sanitizer sees the first byte too many.
      const MediaTypeText text = DescribeMediaType(
          TypeOf(MEDIATYPE_Video, SubtypeOf(FourCc("AVC1")), *format, std::vector<std::uint8_t>(size, 0xFF)));
      EXPECT_EQ(text.fields.empty(), text.summary.ends_with("too short")) << size;
    }
  }
}

TEST(MediaTypeText, Mpeg1SequenceHeaderSizeIsNotTheStartTime) {
  std::vector<std::uint8_t> block(96 + 12);
  Put<std::uint32_t>(block, 88, 7);  // dwStartTimeCode
  Put<std::uint32_t>(block, 92, 12);
  const MediaTypeText text =
      DescribeMediaType(TypeOf(MEDIATYPE_Video, MEDIASUBTYPE_MPEG1Payload, FORMAT_MPEGVideo, block));
  EXPECT_EQ(Number(text, "sequence_header_size"), 12);
}

TEST(MediaTypeText, WaveFormatIsDecoded) {
  std::vector<std::uint8_t> block(18 + 5);
  Put<std::uint16_t>(block, 0, 0xFF);
  Put<std::uint16_t>(block, 2, 2);
  Put<std::uint32_t>(block, 4, 48000);
  Put<std::uint16_t>(block, 12, 4);
  Put<std::uint16_t>(block, 14, 16);
  Put<std::uint16_t>(block, 16, 5);
  const MediaTypeText text = DescribeMediaType(TypeOf(MEDIATYPE_Audio, SubtypeOf(0xFF), FORMAT_WaveFormatEx, block));
  EXPECT_EQ(MediaTypeLine(text),
            "Audio 0x00FF AAC (WAVEFORMATEX): 48000 Hz, 2 channels, 16 bits, block 4 bytes, 5 bytes of codec data");
  Put<std::uint16_t>(block, 16, 500);
  const MediaTypeText liar = DescribeMediaType(TypeOf(MEDIATYPE_Audio, SubtypeOf(0xFF), FORMAT_WaveFormatEx, block));
  EXPECT_EQ(Number(liar, "extra_size"), 5);
  EXPECT_EQ(Number(liar, "claimed_extra_size"), 500);
  EXPECT_NE(liar.summary.find("5 of 500 claimed bytes"), std::string::npos) << liar.summary;
}

TEST(MediaTypeText, SubtypesAreNamedByTheirKind) {
  EXPECT_EQ(MediaTypeLine(DescribeMediaType(TypeOf(MEDIATYPE_Video, SubtypeOf(1), kSubtypeNone, {}))), "Video 0x0001");
  EXPECT_EQ(MediaTypeLine(DescribeMediaType(TypeOf(MEDIATYPE_Audio, SubtypeOf(1), kSubtypeNone, {}))),
            "Audio 0x0001 PCM");
  const GUID unknown = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};
  EXPECT_EQ(MediaTypeLine(DescribeMediaType(TypeOf(MEDIATYPE_Audio, unknown, kSubtypeNone, {}))),
            "Audio {12345678-9ABC-DEF0-0102-030405060708}");
}

TEST(MediaTypeText, VorbisHeaderSizesAreDecoded) {
  std::vector<std::uint8_t> block(24);
  for (std::uint32_t i = 0; i < 6; ++i) Put<std::uint32_t>(block, i * 4, 10 + i);
  CMediaType type = TypeOf(MEDIATYPE_Audio, kSubtypeVorbis2, kFormatVorbis2, block);
  type.bTemporalCompression = TRUE;
  const MediaTypeText text = DescribeMediaType(type);
  EXPECT_TRUE(text.temporalCompression);
  EXPECT_EQ(text.summary, "11 Hz, 10 channels, headers 13 + 14 + 15 bytes");
  EXPECT_EQ(Number(text, "identification_header_size"), 13);
  EXPECT_EQ(Number(text, "setup_header_size"), 15);
}

TEST(MediaTypeText, SubtitleLanguageNeedsNoTerminatingZero) {
  std::vector<std::uint8_t> block(520 + 3);
  std::memcpy(block.data() + 4, "gerX", 4);
  std::fill_n(block.begin() + 8, 512, std::uint8_t{'A'});
  const MediaTypeText text = DescribeMediaType(TypeOf(kTypeSubtitle, kSubtypeAss, kFormatSubtitleInfo, block));
  EXPECT_EQ(Words(text, "language"), "gerX");
  EXPECT_EQ(text.summary, "language gerX, 3 bytes of codec data");
  EXPECT_EQ(Number(text, "extra_size"), 3);
}

}  // namespace
}  // namespace tarvex::host
