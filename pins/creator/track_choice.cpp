// The rule by which a pin's first track is chosen, and pin names. Called while pins are made.
#include "pins/creator/track_choice.h"

#include <algorithm>

namespace tarvex {

namespace {

struct Wish {
  bool language;
  bool defaultFlag;
  bool forcedFlag;
};

// From the best to the one that anything fulfils.
constexpr Wish kWishes[] = {
    {true, false, true}, {false, true, true}, {true, false, false}, {false, true, false}, {false, false, false},
};

bool Fulfils(const TrackPinInfo& track, const Wish& wish, std::string_view language) {
  const bool speaks = !language.empty() && track.language == language;
  return (speaks || !wish.language) && (track.defaultFlag || !wish.defaultFlag) &&
         (track.forcedFlag || !wish.forcedFlag);
}

struct KindWord {
  std::uint32_t trackType;
  std::string_view word;
};
constexpr KindWord kKindWords[] = {
    {kTrackTypeVideo, "Video"}, {kTrackTypeAudio, "Audio"}, {kTrackTypeSubtitle, "Subtitle"}};

}  // namespace

const TrackPinInfo* ChooseTrack(const TrackMap& tracks, std::uint32_t trackType, std::string_view preferredLanguage) {
  for (const Wish& wish : kWishes) {
    const auto found = std::ranges::find_if(tracks, [&](const TrackMap::value_type& entry) {
      return entry.second.trackType == trackType && Fulfils(entry.second, wish, preferredLanguage);
    });
    if (found != tracks.end()) return &found->second;
  }
  return nullptr;
}

WideString PinName(std::uint32_t trackType, std::uint32_t number, std::string_view language) {
  const auto* kind = std::ranges::find(kKindWords, trackType, &KindWord::trackType);
  if (kind == std::end(kKindWords)) return {};
  std::string name(kind->word);
  name.append(" ").append(std::to_string(number)).append(" (lang:").append(language).append(")");
  WideString wide;
  for (const char c : name) wide.push_back(static_cast<OLECHAR>(static_cast<unsigned char>(c)));
  return wide;
}

}  // namespace tarvex
