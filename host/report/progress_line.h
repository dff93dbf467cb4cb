// The one line that tells how far playing has come: rewritten in place on a terminal and cut to its width
// there; elsewhere printed once at the end. The last one is whole everywhere. Owned by the player, main
// thread.
#pragma once

#include <string>

namespace tarvex::host {

class ProgressLine {
 public:
  ProgressLine();

  /// Milliseconds between two calls of Show that make sense.
  unsigned Interval() const noexcept { return m_isTerminal ? 100 : 1000; }

  /// `text` is plain ASCII.
  void Show(const std::string& text);
  /// The last state, which stays.
  void Finish(const std::string& text);
  /// A line of its own, above the progress, for text that is safe to show; terminals only.
  void Tell(const std::string& text);

 private:
  void Rewrite(std::string line);

  const bool m_isTerminal;
  std::size_t m_shown = 0;  // characters on the line
};

}  // namespace tarvex::host
