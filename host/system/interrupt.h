// Ctrl-C as an event that the main thread waits for. One object at a time; the system calls the handler
// on a thread of its own.
#pragma once

#include "host/system/file_handle.h"

namespace tarvex::host {

class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  /// Set from the first Ctrl-C on. A second one ends the process as usual.
  HANDLE Event() const noexcept { return m_event.Get(); }

 private:
  FileHandle m_event;
};

}  // namespace tarvex::host
