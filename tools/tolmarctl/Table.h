#pragma once

#include <string>
#include <vector>

/// @return UTF-8 text as it may be shown: what is no UTF-8, and what a terminal would act on
/// (control characters, changes of direction), becomes U+FFFD.
std::string Printable(const std::string& text);

/// @return how many columns of a terminal printable text takes: two for what is wide in East Asia
/// (and for emoji), none for combining marks, one for everything else. Scripts that a terminal
/// joins or stacks may come out narrower than told here.
std::size_t DisplayWidth(const std::string& text);

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
