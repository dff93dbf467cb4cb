// How the log names the track that a file is refused for. Values only.
#pragma once

namespace tarvex {

/// Begins a text of its own, right before the one with the reason; "track 1 (V_VP9)" follows.
inline constexpr char kRefusedTrack[] = "refused: ";

}  // namespace tarvex
