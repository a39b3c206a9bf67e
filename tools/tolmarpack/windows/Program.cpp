#include "tools/tolmarpack/Program.h"

#include <windows.h>

#include <array>
#include <stdexcept>

#include "host/common/Text.h"
#include "reference_host/base/Handle.h"
#include "tools/common/Arguments.h"

namespace tolmarpack {

using refhost::Handle;

struct Program::Process {
  Handle process;
  Handle output;
};

namespace {

/// As the C runtime of the started program takes it apart ("Parsing C command-line arguments",
/// Microsoft).
std::wstring Quoted(const std::wstring& word) {
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : word) {
    if (c == L'"') quoted.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, L'\\') + L"\"";
}

STARTUPINFOW Streams(HANDLE input, HANDLE output) {
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = input;
  startup.hStdOutput = startup.hStdError = output;
  return startup;
}

}  // namespace

Program::Program(const std::vector<std::string>& words) : _process(new Process) {
  std::wstring commandLine;
  for (const std::string& word : words) {
    commandLine += Quoted(ZLT::String::UTF8ToUTF16(word)) + L" ";
  }
  SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
  HANDLE reading = nullptr, writing = nullptr;
  if (!CreatePipe(&reading, &writing, &inherited, 0)) {
    throw std::runtime_error("no pipe is to be had");
  }
  _process->output = Handle(reading);
  const Handle output(writing);
  const Handle input(
      CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ, &inherited, OPEN_EXISTING, 0, nullptr));
  SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
  STARTUPINFOW startup = Streams(input.Get(), output.Get());
  PROCESS_INFORMATION started{};
  if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                      nullptr, nullptr, &startup, &started)) {
    throw std::runtime_error("cannot start " + words[0] + ", error " +
                             std::to_string(GetLastError()));
  }
  CloseHandle(started.hThread);
  _process->process = Handle(started.hProcess);
}

Program::~Program() {
  if (!IsRunning()) return;
  TerminateProcess(_process->process.Get(), 1);
  WaitForSingleObject(_process->process.Get(), INFINITE);  // It has files open until then.
}

bool Program::IsRunning() const {
  return WaitForSingleObject(_process->process.Get(), 0) == WAIT_TIMEOUT;
}

Ending Program::Wait() {
  Ending ending;
  std::array<char, 4096> buffer{};
  DWORD count = 0;
  while (ReadFile(_process->output.Get(), buffer.data(), DWORD{buffer.size()}, &count, nullptr)) {
    ending.output.append(buffer.data(), count);
  }
  WaitForSingleObject(_process->process.Get(), INFINITE);
  DWORD code = 0;
  GetExitCodeProcess(_process->process.Get(), &code);
  ending.exitStatus = static_cast<int>(code);
  return ending;
}

std::vector<std::string> OwnArguments(int, char**) { return Arguments(); }

std::filesystem::path OwnProgram() {
  std::wstring path(32'768, L'\0');  // No path is longer.
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

}  // namespace tolmarpack
