#include "install/ScriptCommand.h"

#include <string_view>

#include "host/common/Utility.h"

namespace {

constexpr std::wstring_view PowerShell =
    L"\\WindowsPowerShell\\v1.0\\powershell.exe -ExecutionPolicy bypass -NoProfile -NonInteractive "
    L"-WindowStyle Hidden /f \"";
constexpr std::wstring_view InstallTail = L"\" -command \"install\"";
static_assert(PowerShell.size() == 114 && InstallTail.size() == 20);

std::wstring Line(const std::wstring& path, std::wstring_view tail) {
  return ZLT::utility::GetSystemDirectoryW().append(PowerShell).append(path).append(tail);
}

}  // namespace

std::wstring ScriptCommand::Check(const std::wstring& path) { return Line(path, L"\""); }

std::wstring ScriptCommand::Install(const std::wstring& path) { return Line(path, InstallTail); }

// Meant: the quote that opens the path is not closed here; the line ends with the path.
std::wstring ScriptCommand::CheckAfterInstall(const std::wstring& path) { return Line(path, L""); }
