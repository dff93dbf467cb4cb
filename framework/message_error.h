// The exception of opening and creation: a fixed message text and nothing else.
// Thrown inside the scanner, the pins and the pin creator; caught where opening began or at a
// COM or thread border, where the text goes to the log.
#pragma once

#include <exception>

namespace tarvex {

class MessageError : public std::exception {
 public:
  /// `text` must be a string literal or otherwise outlive the exception; it is not copied.
  explicit MessageError(const char* text) noexcept : m_text(text) {}

  const char* what() const noexcept override { return m_text; }

 private:
  const char* m_text;
};

}  // namespace tarvex
