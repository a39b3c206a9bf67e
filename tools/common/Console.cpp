#include "tools/common/Console.h"

#include <cstdio>

#include "reference_host/wine/UnderWine.h"

namespace {

/// Set, and not to nothing: no colours, says no-color.org.
bool AreColoursDeclined() { return GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) > 1; }

}  // namespace

Console::Console() {
  SetConsoleOutputCP(CP_UTF8);
  if (!GetConsoleMode(_output, &_mode) || AreColoursDeclined()) return;
  if (refhost::wine::IsInForce()) return;  // Its console shows the sequences themselves.
  _hasColour = SetConsoleMode(_output, _mode | ENABLE_PROCESSED_OUTPUT |
                                           ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

Console::~Console() {
  std::fflush(nullptr);
  if (_hasColour) SetConsoleMode(_output, _mode);
  SetConsoleOutputCP(_codePage);
}

std::size_t Console::Columns() {
  CONSOLE_SCREEN_BUFFER_INFO about{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &about)) return 0;
  const int columns = about.srWindow.Right - about.srWindow.Left + 1;
  return static_cast<std::size_t>(columns);
}
