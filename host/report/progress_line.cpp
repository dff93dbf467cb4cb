#include "host/report/progress_line.h"

#include <algorithm>

#include "host/system/console.h"
#include "host/system/text_escape.h"

namespace tarvex::host {

ProgressLine::ProgressLine() : m_isTerminal(OutputIsTerminal()) {}

void ProgressLine::Rewrite(std::string line) {
  const std::size_t length = CharacterCount(line);
  line.append(m_shown - std::min(m_shown, length), ' ');
  m_shown = length;
  WriteOutput('\r' + line);
}

void ProgressLine::Show(const std::string& text) {
  // One column stays free: a full line would move the cursor to the next one.
  if (m_isTerminal) Rewrite(text.substr(0, static_cast<std::size_t>(TerminalWidth() - 1)));
}

void ProgressLine::Finish(const std::string& text) {
  if (m_isTerminal) {
    Tell(text);
  } else {
    WriteOutput(text + '\n');
  }
}

void ProgressLine::Tell(const std::string& text) {
  if (!m_isTerminal) return;
  Rewrite(text);
  WriteOutput("\n");
  m_shown = 0;
}

}  // namespace tarvex::host
