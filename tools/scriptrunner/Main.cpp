#include <windows.h>
// Behind windows.h, whose types it needs.
#include <shellapi.h>

#include <cstdio>

#include "reference_host/wine/UnderWine.h"
#include "tools/scriptrunner/Errors.h"
#include "tools/scriptrunner/Run.h"
#include "tools/scriptrunner/WindowsSystem.h"

namespace {

std::vector<std::string> CommandLineWords() {
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> words;
  for (int i = 1; i < count; ++i) words.push_back(scriptrunner::ToUtf8(wide[i]));
  LocalFree(wide);
  return words;
}

}  // namespace

int main() {
  if (!IsUnderWine()) {
    std::fputs("scriptrunner: only for labs under Wine; a PC has PowerShell itself\n", stderr);
    return scriptrunner::ExitCode::Refused;
  }
  scriptrunner::WindowsSystem system;
  scriptrunner::Invocation invocation;
  const std::string error = scriptrunner::ReadCommandLine(CommandLineWords(), invocation);
  if (error.empty()) return scriptrunner::RunScript(invocation, system);
  system.WriteError(error);
  return scriptrunner::ExitCode::Refused;
}
