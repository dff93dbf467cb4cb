// Composition of stream names.
#include "filter/stream_name.h"

#include "pins/formats/language_table.h"

namespace tarvex {

namespace {

WideString KindPrefix(std::uint32_t trackType) {
  switch (trackType) {
    case kTrackTypeVideo:
      return OLESTR("V: ");
    case kTrackTypeAudio:
      return OLESTR("A: ");
    case kTrackTypeSubtitle:
      return OLESTR("S: ");
    default:
      return {};
  }
}

}  // namespace

WideString StreamName(const TrackPinInfo& track) {
  WideString name = track.trackName == kNoSubtitles ? track.trackName : KindPrefix(track.trackType) + track.trackName;
  const std::string_view language = LanguageName(track.language);
  if (language.empty()) return name;
  return name + OLESTR(" [") + WideFromThreadCodePage(language) + OLESTR("]");
}

}  // namespace tarvex
