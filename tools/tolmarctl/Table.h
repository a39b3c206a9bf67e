#pragma once

#include <string>
#include <vector>

/// One cell of a table.
struct Cell {
  enum class Look { Plain, Good, Bad };

  std::string text;
  Look look = Look::Plain;
  bool isNumber = false;  ///< to the right
};

/// A table in lines, each column as wide as its widest cell. A column without any text is left out.
class Table {
 public:
  explicit Table(std::vector<std::string> head);

  /// @param row in, as many cells as the head has; texts of any kind.
  void Add(std::vector<Cell> row);

  bool IsEmpty() const { return _rows.size() == 1; }

  /// @return the lines, the head's first. @param coloured in, true: with the sequences for colour.
  std::string Text(bool coloured) const;

 private:
  std::size_t WidthOf(std::size_t column) const;

  std::vector<std::vector<Cell>> _rows;  ///< the head's first
};
