// The exception that ends a command: what to answer and the one line to say. Thrown anywhere in the
// host, caught in main.
#pragma once

#include <stdexcept>
#include <string>

#include "host/system/exit_code.h"

namespace tarvex::host {

class HostError : public std::runtime_error {
 public:
  /// `text` is UTF-8 and need not be escaped yet.
  HostError(ExitCode code, const std::string& text) : std::runtime_error(text), m_code(code) {}

  ExitCode Code() const noexcept { return m_code; }

 private:
  ExitCode m_code;
};

}  // namespace tarvex::host
