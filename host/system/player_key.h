// The keys of the play command. Free functions over values; any thread.
#pragma once

#include <cstdint>
#include <optional>

namespace tarvex::host {

enum class PlayerKey { kPause, kBack, kForward, kAudio, kSubtitle, kChapter, kQuit };

/// One line, without a line feed.
inline constexpr char kKeyHelp[] = "keys: space pause, left/right 10 s, a audio, s subtitle, c next chapter, q quit";

/// What a key press means: `code` is the platform's virtual key code, `character` what it types, or 0.
std::optional<PlayerKey> PlayerKeyOf(std::uint16_t code, char16_t character);

}  // namespace tarvex::host
