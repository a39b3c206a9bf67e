#include "tools/common/Arguments.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <shellapi.h>

#include "host/common/Text.h"

std::vector<std::string> Arguments() {
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(ZLT::String::UTF16ToUTF8(wide[i]));
  LocalFree(wide);
  return arguments;
}
