#include "tools/scriptrunner/WindowsSystem.h"

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

#include "tools/scriptrunner/Errors.h"

namespace scriptrunner {

namespace {

struct HandleCloser {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, HandleCloser>;

/// Quotes as the program's own start-up code takes it apart again.
std::wstring Quote(const std::string& argument) {
  if (argument.find('"') != std::string::npos) {
    throw CommandFailure("a quote in a program's argument is not in the subset");
  }
  std::string text = argument;
  if (text.empty() || text.find_first_of(" \t") != std::string::npos) {
    const std::size_t end = text.find_last_not_of('\\') + 1;
    text.append(text.size() - end, '\\');
    text = "\"" + text + "\"";
  }
  return ToWide(text);
}

OwnedHandle OpenNowhere() {
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  return OwnedHandle(CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                 &inheritable, OPEN_EXISTING, 0, nullptr));
}

}  // namespace

std::string ToUtf8(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
  utf8.pop_back();
  return utf8;
}

std::wstring ToWide(const std::string& text) {
  const int size = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, wide.data(), size);
  wide.pop_back();
  return wide;
}

std::optional<std::string> WindowsSystem::Environment(const std::string& name) {
  const wchar_t* text = _wgetenv(ToWide(name).c_str());
  if (text == nullptr) return {};
  return ToUtf8(text);
}

void WindowsSystem::Sleep(std::chrono::milliseconds duration) {
  ::Sleep(static_cast<DWORD>(duration.count()));
}

int WindowsSystem::RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                              bool discardOutput) {
  std::wstring line = L"\"" + ToWide(program) + L"\"";
  for (const std::string& argument : arguments) line += L" " + Quote(argument);
  const OwnedHandle nowhere = OpenNowhere();
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = discardOutput ? nowhere.get() : GetStdHandle(STD_OUTPUT_HANDLE);
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION started{};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                      &started)) {
    throw CommandFailure("cannot start '" + program + "': error " + std::to_string(GetLastError()));
  }
  const OwnedHandle thread(started.hThread);
  const OwnedHandle process(started.hProcess);
  DWORD code = 0;
  WaitForSingleObject(process.get(), INFINITE);
  GetExitCodeProcess(process.get(), &code);
  return static_cast<int>(code);
}

void WindowsSystem::Write(const std::string& line) {
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

void WindowsSystem::WriteError(const std::string& line) {
  std::fprintf(stderr, "scriptrunner: %s\n", line.c_str());
  const std::filesystem::path folder(ToWide(Environment("windir").value_or("C:\\windows")));
  std::ofstream(folder / "temp" / "scriptrunner.log", std::ios::app) << line << "\n";
}

}  // namespace scriptrunner
