// Runs genuine PowerShell in the lab: what its own pwsh.exe does, in the place of Windows
// PowerShell and with what keeps .NET alive under Wine 8. Same command line, output and exit code
// as %ProgramFiles%\PowerShell\7\pwsh.exe.
#include <windows.h>
// Behind windows.h, whose types it needs.
#include <shellapi.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "reference_host/wine/UnderWine.h"

namespace {

namespace fs = std::filesystem;

constexpr int ExitRefused = 64;

/// .NET's own entry for host programs ("host_startup_info" of its hosting components): arguments,
/// the program, .NET's folder, the application.
using HostMain = int(__cdecl*)(int, const wchar_t**, const wchar_t*, const wchar_t*,
                               const wchar_t*);

/// Wine 8 keeps a list of frames on each thread for exception handling, which genuine 64-bit
/// Windows does not have. .NET from 9 on leaves such frames by its own means, so that the list's
/// head then points below the stack, and the next exception ends in whatever stands there. Called
/// before Wine looks at the list, this empties it.
LONG CALLBACK ForgetFramesThatAreGone(EXCEPTION_POINTERS* exception) {
  auto* thread = reinterpret_cast<NT_TIB*>(NtCurrentTeb());
  const auto none = static_cast<ULONG_PTR>(-1);
  if (reinterpret_cast<ULONG_PTR>(thread->ExceptionList) < exception->ContextRecord->Rsp) {
    thread->ExceptionList = reinterpret_cast<EXCEPTION_REGISTRATION_RECORD*>(none);
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

/// PowerShell is to tell nobody that it runs, to look for no newer one, and to write plain text, as
/// Windows PowerShell.
void SetEnvironment() {
  SetEnvironmentVariableW(L"POWERSHELL_TELEMETRY_OPTOUT", L"1");
  SetEnvironmentVariableW(L"POWERSHELL_UPDATECHECK", L"Off");
  SetEnvironmentVariableW(L"NO_COLOR", L"1");
}

fs::path ProgramFiles() {
  const wchar_t* folder = _wgetenv(L"ProgramFiles");
  return folder != nullptr ? folder : L"C:\\Program Files";
}

HostMain LoadDotnet(const fs::path& dotnet) {
  for (const fs::directory_entry& version : fs::directory_iterator(dotnet / "host" / "fxr")) {
    const HMODULE library = LoadLibraryW((version.path() / "hostfxr.dll").c_str());
    if (library == nullptr) continue;
    const auto entry = GetProcAddress(library, "hostfxr_main_startupinfo");
    if (entry != nullptr) return reinterpret_cast<HostMain>(reinterpret_cast<void*>(entry));
  }
  throw std::runtime_error("no .NET in " + dotnet.string());
}

int RunPowerShell() {
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<const wchar_t*> arguments(words, words + count);
  const fs::path dotnet = ProgramFiles() / "dotnet";
  const fs::path folder = ProgramFiles() / "PowerShell" / "7";
  return LoadDotnet(dotnet)(count, arguments.data(), (folder / "pwsh.exe").c_str(), dotnet.c_str(),
                            (folder / "pwsh.dll").c_str());
}

}  // namespace

int main() {
  if (!IsUnderWine()) {
    std::fputs("pwshhost: only for labs under Wine; a PC has PowerShell itself\n", stderr);
    return ExitRefused;
  }
  AddVectoredExceptionHandler(1, ForgetFramesThatAreGone);
  SetEnvironment();
  try {
    return RunPowerShell();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "pwshhost: %s\n", error.what());
    return ExitRefused;
  }
}
