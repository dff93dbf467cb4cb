#include "host/report/guid_text.h"

#include <fmt/format.h>

#include <span>

#include "pins/formats/media_guids.h"

namespace tarvex::host {

namespace {

struct Named {
  const GUID& guid;
  const char* name;
};

const Named kMajorTypes[] = {
    {MEDIATYPE_Video, "Video"},   {MEDIATYPE_Audio, "Audio"}, {kTypeSubtitle, "Subtitle"},
    {MEDIATYPE_Stream, "Stream"}, {MEDIATYPE_Text, "Text"},
};

const Named kSubtypes[] = {
    {kSubtypeH264ByteStream, "H264 byte stream"},
    {MEDIASUBTYPE_MPEG1Payload, "MPEG-1 payload"},
    {MEDIASUBTYPE_MPEG2_VIDEO, "MPEG-2 video"},
    {kSubtypeTrueHd, "Dolby TrueHD"},
    {kSubtypeFlac, "FLAC"},
    {kSubtypeVorbis2, "Vorbis"},
    {kSubtypeUtf8, "UTF-8"},
    {kSubtypeSsa, "SSA"},
    {kSubtypeAss, "ASS"},
    {kSubtypeUsf, "USF"},
    {kSubtypeVobSub, "VobSub"},
};

const Named kFormatTypes[] = {
    {FORMAT_VideoInfo, "VIDEOINFOHEADER"}, {FORMAT_VideoInfo2, "VIDEOINFOHEADER2"},
    {FORMAT_MPEGVideo, "MPEG1VIDEOINFO"},  {FORMAT_MPEG2Video, "MPEG2VIDEOINFO"},
    {FORMAT_WaveFormatEx, "WAVEFORMATEX"}, {kFormatVorbis2, "VORBISFORMAT2"},
    {kFormatSubtitleInfo, "SUBTITLEINFO"},
};

struct NamedTag {
  std::uint32_t tag;
  const char* name;
};

constexpr NamedTag kWaveTags[] = {
    {0x0001, "PCM"},  {0x0003, "PCM float"}, {0x0050, "MPEG audio"}, {0x0055, "MP3"}, {0x00FF, "AAC"},
    {0x0130, "SIPR"}, {0x0270, "ATRC"},      {0x2000, "AC-3"},       {0x2001, "DTS"}, {0x2002, "14_4"},
    {0x2003, "28_8"}, {0x2004, "COOK"},      {0x5756, "WavPack"},    {0x77A1, "TTA"}, {0xF1AC, "FLAC"},
};

std::optional<std::string> Find(std::span<const Named> names, const GUID& guid) {
  if (guid == kSubtypeNone) return "none";
  for (const Named& entry : names) {
    if (entry.guid == guid) return entry.name;
  }
  return std::nullopt;
}

}  // namespace

std::string GuidText(const GUID& guid) {
  std::string text =
      fmt::format("{{{:08X}-{:04X}-{:04X}-", static_cast<std::uint32_t>(guid.Data1), guid.Data2, guid.Data3);
  for (int i = 0; i < 8; ++i) {
    text += fmt::format("{:02X}", guid.Data4[i]);
    if (i == 1) text += '-';
  }
  return text + '}';
}

std::string MajorTypeName(const GUID& guid) { return Find(kMajorTypes, guid).value_or(GuidText(guid)); }

std::string FormatTypeName(const GUID& guid) { return Find(kFormatTypes, guid).value_or(GuidText(guid)); }

std::string SubtypeName(const GUID& major, const GUID& subtype) {
  if (const auto name = Find(kSubtypes, subtype)) return *name;
  const auto code = CodeOfSubtype(subtype);
  if (!code) return GuidText(subtype);
  if (*code > 0xFFFF) return FourCcText(*code);
  const std::string name = major == MEDIATYPE_Audio ? WaveTagName(*code) : std::string();
  return name.empty() ? fmt::format("0x{:04X}", *code) : fmt::format("0x{:04X} {}", *code, name);
}

std::optional<std::uint32_t> CodeOfSubtype(const GUID& guid) {
  if (guid != SubtypeOf(static_cast<std::uint32_t>(guid.Data1))) return std::nullopt;
  return static_cast<std::uint32_t>(guid.Data1);
}

std::string FourCcText(std::uint32_t code) {
  std::string text;
  for (int i = 0; i < 4; ++i) {
    const char letter = static_cast<char>(code >> (8 * i) & 0xFF);
    if (letter < 0x20 || letter > 0x7E) return fmt::format("0x{:08X}", code);
    text += letter;
  }
  return text;
}

std::string WaveTagName(std::uint32_t tag) {
  for (const NamedTag& entry : kWaveTags) {
    if (entry.tag == tag) return entry.name;
  }
  return {};
}

}  // namespace tarvex::host
