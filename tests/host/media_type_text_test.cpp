// Format blocks that are short or lie about themselves. Those of real files are in transcripts/reports.txt.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "framework/media_type.h"
#include "host/report/media_type_text.h"
#include "pins/formats/media_guids.h"

namespace tarvex::host {
namespace {

std::string LineOf(const GUID& major, const GUID& subtype, const GUID& format, const std::vector<std::uint8_t>& block) {
  CMediaType type(major);
  type.subtype = subtype;
  type.formattype = format;
  std::ranges::copy(block, type.AllocFormatBuffer(static_cast<ULONG>(block.size())));
  return MediaTypeLine(DescribeMediaType(type));
}

TEST(MediaTypeText, EveryShorterBlockIsReadWithinItsBounds) {
  const std::pair<const GUID*, std::size_t> formats[] = {
      // and their published sizes
      {&FORMAT_VideoInfo, 88},    {&FORMAT_VideoInfo2, 112}, {&FORMAT_MPEGVideo, 96},    {&FORMAT_MPEG2Video, 132},
      {&FORMAT_WaveFormatEx, 18}, {&kFormatVorbis2, 24},     {&kFormatSubtitleInfo, 520}};
  for (const auto& [format, least] : formats) {
    for (std::size_t size = 0; size <= 600; ++size) {
      // Exactly as large as it claims, so that a sanitizer sees the first byte too many.
      const std::string line =
          LineOf(MEDIATYPE_Video, SubtypeOf(FourCc("AVC1")), *format, std::vector<std::uint8_t>(size, 0xFF));
      EXPECT_EQ(line.ends_with("too short"), size < least) << line;
    }
  }
}

// Behind an MPEG2VIDEOINFO, one parameter set of 4 bytes and one of 2; the second has the length `second`.
std::string LineOfAvc(std::uint32_t claimed, std::uint8_t second) {
  std::vector<std::uint8_t> block(132);
  std::memcpy(block.data() + 116, &claimed, sizeof claimed);
  block.insert(block.end(), {0, 4, 0x67, 1, 2, 3, 0, second, 0x68, 1});
  return LineOf(MEDIATYPE_Video, SubtypeOf(FourCc("AVC1")), FORMAT_MPEG2Video, block);
}

TEST(MediaTypeText, ABlockMayClaimMoreThanThereIs) {
  EXPECT_NE(LineOfAvc(0xFFFFFFFF, 2).find(" 2 parameter sets, sequence header 4294967295 bytes"), std::string::npos);
  EXPECT_NE(LineOfAvc(10, 3).find(" 1 parameter sets"), std::string::npos);
  std::vector<std::uint8_t> wave(18 + 5);
  wave[17] = 2;
  const std::string line = LineOf(MEDIATYPE_Audio, SubtypeOf(0xFF), FORMAT_WaveFormatEx, wave);
  EXPECT_TRUE(line.ends_with(", 5 of 512 claimed bytes of codec data")) << line;
}

}  // namespace
}  // namespace tarvex::host
