#include "tools/tolmarctl/Table.h"

#include <gtest/gtest.h>

#include "tools/common/TerminalText.h"

TEST(Table, ColumnsAreAlignedByWhatATerminalShows) {
  Table table({"NAME", "BYTES", "EMPTY", "STATUS"});
  EXPECT_TRUE(table.IsEmpty());
  table.Add({{"Größe"}, {"7", Cell::Look::Plain, true}, {""}, {"installed", Cell::Look::Good}});
  table.Add({{"漢字a"}, {"1234567", Cell::Look::Plain, true}, {""}, {""}});
  table.Add(
      {{"e\u0301"}, {"0", Cell::Look::Plain, true}, {""}, {"not installed", Cell::Look::Bad}});
  EXPECT_EQ(table.Text(false),
            "NAME     BYTES  STATUS\n"
            "Größe        7  installed\n"
            "漢字a  1234567\n"
            "e\u0301            0  not installed\n");
  const std::string coloured = table.Text(true);
  EXPECT_NE(coloured.find("7  \x1b[32minstalled\x1b[0m\n"), std::string::npos) << coloured;
  EXPECT_NE(coloured.find("0  \x1b[33mnot installed\x1b[0m\n"), std::string::npos) << coloured;
}

TEST(Table, NothingThatATerminalActsOnIsShown) {
  const struct {
    const char* name;
    std::string text;
    std::string shown;
    std::size_t width;
  } rows[] = {{"ASCII", "a b", "a b", 3},
              {"escape, end of line", "a\x1b[2J\n", "a\uFFFD[2J\uFFFD", 6},
              {"control of eight bits", "\u009B31m", "\uFFFD31m", 4},
              {"change of direction", "a\u202Eb", "a\uFFFDb", 3},
              {"no UTF-8", "a\xFF\xC3", "a\uFFFD\uFFFD", 3},
              {"emoji, Hangul, full width", "😀한Ａ", "😀한Ａ", 6}};
  for (const auto& row : rows) {
    EXPECT_EQ(Printable(row.text), row.shown) << row.name;
    EXPECT_EQ(DisplayWidth(row.shown), row.width) << row.name;
  }
}
