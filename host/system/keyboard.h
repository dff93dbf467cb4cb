// The keys that the user presses while something plays, where there is a terminal on both sides of the
// program. Owned by the player, main thread.
#pragma once

#include <vector>

#include "framework/platform/platform.h"
#include "host/system/player_key.h"

namespace tarvex::host {

class Keyboard {
 public:
  /// Without a terminal no key ever comes.
  Keyboard();

  bool IsThere() const noexcept { return m_input != nullptr; }
  /// Set while keys wait to be taken; null without a terminal.
  HANDLE Event() const noexcept { return m_input; }
  /// The keys that wait, oldest first. Does not wait for any.
  std::vector<PlayerKey> Take();

 private:
  HANDLE m_input = nullptr;  // the process's, not ours to close
};

}  // namespace tarvex::host
