#include "host/text_table.h"

#include <algorithm>

#include "host/text_escape.h"

namespace tarvex::host {

CTextTable::CTextTable(std::vector<std::string> headings) : m_rightAligned(headings.size()), m_widths(headings.size()) {
  for (std::size_t i = 0; i < headings.size(); ++i) {
    m_rightAligned[i] = headings[i].starts_with('>');
    if (m_rightAligned[i]) headings[i].erase(0, 1);
  }
  AddRow(headings);
}

void CTextTable::AddRow(const std::vector<std::string>& cells) {
  std::vector<std::string>& row = m_rows.emplace_back();
  for (std::size_t i = 0; i < m_widths.size(); ++i) {
    row.push_back(EscapeAndShorten(cells.at(i)));
    m_widths[i] = std::max(m_widths[i], CharacterCount(row[i]));
  }
}

std::string CTextTable::Line(const std::vector<std::string>& cells) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string padding(m_widths[i] - CharacterCount(cells[i]), ' ');
    line += "  ";
    line += m_rightAligned[i] ? padding + cells[i] : cells[i] + padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

std::string CTextTable::Text() const {
  std::string text;
  for (const auto& row : m_rows) text += Line(row);
  return text;
}

}  // namespace tarvex::host
