#include "host/progress_line.h"

#include <algorithm>

#include "host/console.h"

namespace tarvex::host {

CProgressLine::CProgressLine() : m_isTerminal(OutputIsTerminal()) {}

void CProgressLine::Show(const std::string& text) {
  if (!m_isTerminal) return;
  // One column stays free: a full line would move the cursor to the next one.
  std::string line = text.substr(0, static_cast<std::size_t>(TerminalWidth() - 1));
  const std::size_t length = line.size();
  line.append(m_shown - std::min(m_shown, length), ' ');
  m_shown = length;
  WriteOutput('\r' + line);
}

void CProgressLine::Finish(const std::string& text) {
  Show(text);
  WriteOutput(m_isTerminal ? std::string("\n") : text + '\n');
}

}  // namespace tarvex::host
