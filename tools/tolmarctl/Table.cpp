#include "tools/tolmarctl/Table.h"

#include <algorithm>

#include "tools/common/TerminalText.h"

namespace {

constexpr const char* Reset = "\x1b[0m";
const char* SequenceOf(Cell::Look look) {
  return look == Cell::Look::Good ? "\x1b[32m" : "\x1b[33m";
}

std::string Laid(const Cell& cell, std::size_t width, bool coloured) {
  const std::string blanks(width - DisplayWidth(cell.text), ' ');
  const bool hasColour = coloured && cell.look != Cell::Look::Plain;
  const std::string text = hasColour ? SequenceOf(cell.look) + cell.text + Reset : cell.text;
  return cell.isNumber ? blanks + text : text + blanks;
}

}  // namespace

Table::Table(std::vector<std::string> head) {
  std::vector<Cell>& cells = _rows.emplace_back();
  for (std::string& text : head) cells.push_back({std::move(text)});
}

void Table::Add(std::vector<Cell> row) {
  for (Cell& cell : row) cell.text = Printable(cell.text);
  for (std::size_t i = 0; i < row.size(); ++i) _rows[0][i].isNumber = row[i].isNumber;
  _rows.push_back(std::move(row));
}

std::size_t Table::WidthOf(std::size_t column) const {
  std::size_t body = 0;
  for (std::size_t i = 1; i < _rows.size(); ++i) {
    body = std::max(body, DisplayWidth(_rows[i][column].text));
  }
  return body == 0 ? 0 : std::max(body, DisplayWidth(_rows[0][column].text));
}

std::string Table::Text(bool coloured) const {
  std::string lines;
  for (const std::vector<Cell>& row : _rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::size_t width = WidthOf(i);
      if (width > 0) line += (line.empty() ? "" : "  ") + Laid(row[i], width, coloured);
    }
    lines += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return lines;
}
