// Which track of a kind a pin starts with, and what the pin is called. Free functions over stream
// records, used by pin creation; any thread.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>

#include "pins/formats/track_pin_info.h"

namespace tarvex {

/// Stream records by track number.
using TrackMap = std::map<std::uint32_t, TrackPinInfo>;

/// The track of this type that suits best: forced in the user's language, default and forced, in the
/// user's language, default, any; among equals the lowest number. Null when there is none of the type.
/// An empty `preferredLanguage` matches no track. The result points into `tracks`.
const TrackPinInfo* ChooseTrack(const TrackMap& tracks, std::uint32_t trackType, std::string_view preferredLanguage);

/// "Video 0 (lang:eng)": the kind, its number among the pins of the kind, the language. Narrow text is
/// widened character by character. Empty for a track that is no video, audio or subtitle.
WideString PinName(std::uint32_t trackType, std::uint32_t number, std::string_view language);

}  // namespace tarvex
