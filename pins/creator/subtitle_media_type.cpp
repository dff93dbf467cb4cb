// One row per subtitle codec identifier. Called while a file is opened.
#include "pins/creator/subtitle_media_type.h"

#include <algorithm>
#include <cstddef>

#include "framework/log.h"
#include "pins/creator/track_elements.h"
#include "pins/formats/media_guids.h"
#include "scanner/elements/heap.h"

namespace tarvex {

namespace {

using Bytes = std::span<const std::uint8_t>;

struct SubtitleRow {
  std::string_view codecId;
  const GUID* subtype;
};

constexpr SubtitleRow kSubtitleRows[] = {
    {"S_TEXT/UTF8", &kSubtypeUtf8},
    {"S_TEXT/SSA", &kSubtypeSsa},
    {"S_TEXT/ASS", &kSubtypeAss},
    {"S_TEXT/USF", &kSubtypeUsf},
    {"S_VOBSUB", &kSubtypeVobSub},
    // Known, but without a subtype of its own.
    {"S_HDMV/PGS", &kSubtypeNone},
};

struct SubtitleInfo {
  std::uint32_t offset;  // stays 0 on purpose, although the codec private follows the structure
  char isoLang[4];
  char16_t trackName[256];
};
static_assert(sizeof(SubtitleInfo) == 520 && offsetof(SubtitleInfo, isoLang) == 4 &&
              offsetof(SubtitleInfo, trackName) == 8);

constexpr std::size_t kLanguageLetters = 3;

GUID SubtypeFor(std::string_view codecId) {
  const auto* row = std::ranges::find(kSubtitleRows, codecId, &SubtitleRow::codecId);
  if (row != std::end(kSubtitleRows)) return *row->subtype;
  LogText("Unknown Subtitle codecIdStr");
  return kSubtypeNone;
}

}  // namespace

CMediaType SubtitleMediaType(const CHeap& track, std::string_view language) {
  CMediaType type(kTypeSubtitle);
  const auto codecId = track.String("KaxCodecID");
  if (!codecId) return type;
  if (*codecId == "S_TEXT/ASCII") {
    type.majortype = MEDIATYPE_Text;
    return type;
  }
  type.formattype = kFormatSubtitleInfo;
  SubtitleInfo info{};
  std::ranges::copy(language.substr(0, kLanguageLetters), info.isoLang);
  SetFormatBlock(type, BytesOf(info), track.Binary("KaxCodecPrivate").value_or(Bytes()));
  type.subtype = SubtypeFor(*codecId);
  return type;
}

}  // namespace tarvex
