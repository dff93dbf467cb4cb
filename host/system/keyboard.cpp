#include "host/system/keyboard.h"

#include <algorithm>
#include <iterator>

#include "host/system/console.h"

namespace tarvex::host {

namespace {

bool HasInput(HANDLE console) {
  DWORD waiting = 0;
  return GetNumberOfConsoleInputEvents(console, &waiting) && waiting != 0;
}

// A key that is held down comes as one event with a count.
void AddKeys(const INPUT_RECORD& record, std::vector<PlayerKey>& keys) {
  const KEY_EVENT_RECORD& event = record.Event.KeyEvent;
  if (record.EventType != KEY_EVENT || !event.bKeyDown) return;
  if ((event.dwControlKeyState & (LEFT_ALT_PRESSED | LEFT_CTRL_PRESSED | RIGHT_CTRL_PRESSED)) != 0) return;
  const auto key = PlayerKeyOf(event.wVirtualKeyCode, static_cast<char16_t>(event.uChar.UnicodeChar));
  if (key) keys.insert(keys.end(), std::max<WORD>(event.wRepeatCount, 1), *key);
}

}  // namespace

Keyboard::Keyboard() {
  HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  DWORD mode = 0;
  if (OutputIsTerminal() && GetConsoleMode(input, &mode)) m_input = input;
}

std::vector<PlayerKey> Keyboard::Take() {
  std::vector<PlayerKey> keys;
  INPUT_RECORD records[16];
  while (m_input != nullptr && HasInput(m_input)) {
    DWORD count = 0;
    if (!ReadConsoleInputW(m_input, records, static_cast<DWORD>(std::size(records)), &count)) m_input = nullptr;
    for (DWORD i = 0; i < count; ++i) AddKeys(records[i], keys);
  }
  return keys;
}

}  // namespace tarvex::host
