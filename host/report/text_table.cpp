#include "host/report/text_table.h"

#include <algorithm>

#include "host/system/text_escape.h"

namespace tarvex::host {

TextTable::TextTable(std::vector<std::string> headings) : m_rightAligned(headings.size()), m_widths(headings.size()) {
  for (std::size_t i = 0; i < headings.size(); ++i) {
    m_rightAligned[i] = headings[i].starts_with('>');
    if (m_rightAligned[i]) headings[i].erase(0, 1);
  }
  AddRow(headings);
}

void TextTable::AddRow(const std::vector<std::string>& cells) {
  std::vector<std::string>& row = m_rows.emplace_back();
  for (std::size_t i = 0; i < m_widths.size(); ++i) {
    row.push_back(EscapeAndShorten(cells.at(i)));
    m_widths[i] = std::max(m_widths[i], CharacterCount(row[i]));
  }
}

TextTable::Widths TextTable::FittingWidths(std::size_t width) const {
  constexpr std::size_t kLeast = 10;
  Widths widths = m_widths;
  std::size_t total = 2 * widths.size();
  for (const std::size_t each : widths) total += each;
  for (; total > width; --total) {
    std::size_t widest = widths.size();
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const bool mayBeCut = !m_rightAligned[i] && widths[i] > kLeast;
      if (mayBeCut && (widest == widths.size() || widths[i] > widths[widest])) widest = i;
    }
    if (widest == widths.size()) break;
    --widths[widest];
  }
  return widths;
}

std::string TextTable::Line(const std::vector<std::string>& cells, const Widths& widths) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string cell = Shorten(cells[i], widths[i]);
    const std::string padding(widths[i] - CharacterCount(cell), ' ');
    line += "  ";
    line += m_rightAligned[i] ? padding + cell : cell + padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

std::string TextTable::Text(std::optional<std::size_t> width) const {
  const Widths widths = width ? FittingWidths(*width) : m_widths;
  std::string text;
  for (const auto& row : m_rows) text += Line(row, widths);
  return text;
}

}  // namespace tarvex::host
