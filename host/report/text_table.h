// A table in plain text with aligned columns. Filled and printed by one thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarvex::host {

class TextTable {
 public:
  /// A heading that begins with '>' makes its column right-aligned; the sign is not shown.
  explicit TextTable(std::vector<std::string> headings);

  /// As many cells as there are headings. Cells are escaped for the terminal here, and shortened if they are
  /// far too long.
  void AddRow(const std::vector<std::string>& cells);

  bool IsEmpty() const noexcept { return m_rows.size() == 1; }

  /// Headings and rows, each line indented by two blanks and ended by a line feed. With a width, in characters,
  /// the widest left-aligned columns are cut until the lines fit, but none to fewer than ten.
  std::string Text(std::optional<std::size_t> width = std::nullopt) const;

 private:
  using Widths = std::vector<std::size_t>;

  Widths FittingWidths(std::size_t width) const;
  std::string Line(const std::vector<std::string>& cells, const Widths& widths) const;

  std::vector<bool> m_rightAligned;
  Widths m_widths;
  std::vector<std::vector<std::string>> m_rows;  // the headings first
};

}  // namespace tarvex::host
