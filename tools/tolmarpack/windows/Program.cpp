#include "tools/tolmarpack/Program.h"

#include <windows.h>

#include <array>
#include <stdexcept>

#include "host/common/Text.h"
#include "reference_host/base/Handle.h"
#include "reference_host/process/ProcessStart.h"
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

}  // namespace

Program::Program(const std::vector<std::string>& words) : _process(new Process) {
  refhost::ProcessOrder order;
  for (const std::string& word : words) {
    order.commandLine += Quoted(ZLT::String::UTF8ToUTF16(word)) + L" ";
  }
  SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
  HANDLE reading = nullptr, writing = nullptr;
  if (!CreatePipe(&reading, &writing, &inherited, 0)) {
    throw std::runtime_error("no pipe is to be had");
  }
  _process->output = Handle(reading);
  const Handle output(writing);
  order.output = writing;
  _process->process = refhost::StartProcess(order);
  if (_process->process) return;
  throw std::runtime_error("cannot start " + words[0] + ", error " +
                           std::to_string(GetLastError()));
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
