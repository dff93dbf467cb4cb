// Format blocks that are short and claim more than there is. Those of real files are in transcripts/reports.txt.
#include <gtest/gtest.h>

#include <algorithm>

#include "framework/media_type.h"
#include "host/report/media_type_text.h"
#include "pins/formats/media_guids.h"

namespace tarvex::host {
namespace {

TEST(MediaTypeText, EveryShorterBlockIsReadWithinItsBounds) {
  const std::pair<const GUID*, std::size_t> formats[] = {
      // and their published sizes
      {&FORMAT_VideoInfo, 88},    {&FORMAT_VideoInfo2, 112}, {&FORMAT_MPEGVideo, 96},    {&FORMAT_MPEG2Video, 132},
      {&FORMAT_WaveFormatEx, 18}, {&kFormatVorbis2, 24},     {&kFormatSubtitleInfo, 520}};
  for (const auto& [format, least] : formats) {
    for (std::size_t size = 0; size <= 600; ++size) {
      CMediaType type(MEDIATYPE_Video);
      type.subtype = SubtypeOf(FourCc("AVC1"));
      type.formattype = *format;
      // Exactly as large as it claims, so that a sanitizer sees the first byte too many.
      std::fill_n(type.AllocFormatBuffer(static_cast<ULONG>(size)), size, BYTE{0xFF});
      const std::string line = MediaTypeLine(DescribeMediaType(type));
      EXPECT_EQ(line.ends_with("too short"), size < least) << line;
    }
  }
}

}  // namespace
}  // namespace tarvex::host
