#include "host/report/media_type_text.h"

#include <fmt/format.h>

#include "host/report/format_block_text.h"
#include "host/report/guid_text.h"
#include "pins/formats/media_guids.h"

namespace tarvex::host {

namespace {

using Decoder = bool (*)(MediaTypeText& text);

struct DecoderRow {
  const GUID& format;
  Decoder decode;
};

const DecoderRow kDecoders[] = {
    {FORMAT_VideoInfo, DecodeVideoInfo},       {FORMAT_VideoInfo2, DecodeVideoInfo2},
    {FORMAT_MPEGVideo, DecodeMpeg1VideoInfo},  {FORMAT_MPEG2Video, DecodeMpeg2VideoInfo},
    {FORMAT_WaveFormatEx, DecodeWaveFormat},   {kFormatVorbis2, DecodeVorbisFormat},
    {kFormatSubtitleInfo, DecodeSubtitleInfo},
};

void Decode(MediaTypeText& text) {
  for (const DecoderRow& row : kDecoders) {
    if (row.format != text.format) continue;
    if (!row.decode(text)) text.summary = fmt::format("block of {} bytes is too short", text.block.size());
    return;
  }
}

}  // namespace

MediaTypeText DescribeMediaType(const AM_MEDIA_TYPE& type) {
  MediaTypeText text;
  text.major = type.majortype;
  text.subtype = type.subtype;
  text.format = type.formattype;
  text.fixedSizeSamples = type.bFixedSizeSamples != FALSE;
  text.temporalCompression = type.bTemporalCompression != FALSE;
  text.sampleSize = type.lSampleSize;
  if (type.pbFormat != nullptr) text.block.assign(type.pbFormat, type.pbFormat + type.cbFormat);
  Decode(text);
  return text;
}

std::string MediaTypeLine(const MediaTypeText& text) {
  std::string line = fmt::format("{} {}", MajorTypeName(text.major), SubtypeName(text.major, text.subtype));
  if (text.format != kSubtypeNone) line += fmt::format(" ({})", FormatTypeName(text.format));
  if (!text.summary.empty()) line += ": " + text.summary;
  return line;
}

std::string HexText(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) fmt::format_to(std::back_inserter(text), "{:02x}", byte);
  return text;
}

}  // namespace tarvex::host
