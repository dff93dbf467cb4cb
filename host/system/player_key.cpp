#include "host/system/player_key.h"

namespace tarvex::host {

namespace {

// The platform's codes of keys that type nothing.
constexpr std::uint16_t kLeft = 0x25;
constexpr std::uint16_t kRight = 0x27;

struct Typed {
  char16_t character;
  PlayerKey key;
};

constexpr Typed kTyped[] = {
    {u' ', PlayerKey::kPause},    {u'a', PlayerKey::kAudio},    {u'A', PlayerKey::kAudio},
    {u's', PlayerKey::kSubtitle}, {u'S', PlayerKey::kSubtitle}, {u'c', PlayerKey::kChapter},
    {u'C', PlayerKey::kChapter},  {u'q', PlayerKey::kQuit},     {u'Q', PlayerKey::kQuit},
};

}  // namespace

// By character where there is one: on another keyboard the letters are elsewhere.
std::optional<PlayerKey> PlayerKeyOf(std::uint16_t code, char16_t character) {
  if (character == 0 && code == kLeft) return PlayerKey::kBack;
  if (character == 0 && code == kRight) return PlayerKey::kForward;
  for (const Typed& typed : kTyped) {
    if (typed.character == character) return typed.key;
  }
  return std::nullopt;
}

}  // namespace tarvex::host
