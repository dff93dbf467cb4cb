// Decoder of the subtitle format.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "framework/text_conversion.h"
#include "host/report/block_reader.h"
#include "host/report/format_block_text.h"

namespace tarvex::host {

namespace {

struct SubtitleInfo {
  std::uint32_t offset;
  char language[4];
  std::uint16_t trackName[256];
};
static_assert(sizeof(SubtitleInfo) == 520);

// Either text may fill its field without a terminating zero.
std::string LanguageOf(const SubtitleInfo& info) {
  return {info.language, std::find(std::begin(info.language), std::end(info.language), '\0')};
}

std::string TrackNameOf(const SubtitleInfo& info) {
  WideString name;
  for (const std::uint16_t unit : info.trackName) {
    if (unit == 0) break;
    name += static_cast<OLECHAR>(unit);
  }
  return Utf8FromWide(name);
}

}  // namespace

bool DecodeSubtitleInfo(MediaTypeText& text) {
  const auto info = ReadBlock<SubtitleInfo>(text.block);
  if (!info) return false;
  const std::size_t extra = text.block.size() - sizeof(SubtitleInfo);
  const std::string language = LanguageOf(*info);
  AddField(text, "offset", std::int64_t{info->offset});
  AddField(text, "language", language);
  AddField(text, "track_name", TrackNameOf(*info));
  AddField(text, "extra_size", static_cast<std::int64_t>(extra));
  text.summary = fmt::format("language {}", language.empty() ? "none" : language);
  if (extra != 0) text.summary += fmt::format(", {} bytes of codec data", extra);
  return true;
}

}  // namespace tarvex::host
