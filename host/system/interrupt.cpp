#include "host/system/interrupt.h"

#include <atomic>

namespace tarvex::host {

namespace {

std::atomic<HANDLE> interruptEvent{nullptr};

BOOL WINAPI Handle(DWORD /*kind*/) {
  HANDLE event = interruptEvent.load();
  if (event == nullptr || WaitForSingleObject(event, 0) == WAIT_OBJECT_0) return FALSE;
  SetEvent(event);
  return TRUE;
}

}  // namespace

Interrupt::Interrupt() : m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  interruptEvent = m_event.Get();
  // A parent that ignores Ctrl-C passes that on, so it is switched on as well.
  SetConsoleCtrlHandler(nullptr, FALSE);
  SetConsoleCtrlHandler(&Handle, TRUE);
}

Interrupt::~Interrupt() {
  SetConsoleCtrlHandler(&Handle, FALSE);
  interruptEvent = nullptr;
}

}  // namespace tarvex::host
