// The name under which a player shows a stream. A function of the stream record; any thread.
#pragma once

#include "framework/text_conversion.h"
#include "pins/formats/track_pin_info.h"

namespace tarvex {

/// "A: Commentary [French]": kind, track name, and the language where its code is known. The stream that
/// switches subtitles off has its name alone.
WideString StreamName(const TrackPinInfo& track);

}  // namespace tarvex
