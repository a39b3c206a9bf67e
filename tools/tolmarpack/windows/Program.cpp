#include "tools/tolmarpack/Program.h"

#include <windows.h>

#include <stdexcept>

#include "host/common/Text.h"
#include "reference_host/base/Handle.h"
#include "reference_host/process/ProcessStart.h"
#include "tools/common/Arguments.h"
#include "tools/tolmarpack/Files.h"

namespace tolmarpack {

using refhost::Handle;

/// Its output goes to a file: what a program leaves running would keep a pipe open.
struct Program::Process {
  std::filesystem::path Output() const { return folder.Path() / "output"; }

  TemporaryFolder folder;
  Handle process;
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

Handle NewFile(const std::filesystem::path& path) {
  SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
  return Handle(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                            &inheritable, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace

Program::Program(const std::vector<std::string>& words) : _process(new Process) {
  refhost::ProcessOrder order;
  for (const std::string& word : words) {
    order.commandLine += Quoted(ZLT::String::UTF8ToUTF16(word)) + L" ";
  }
  const Handle output = NewFile(_process->Output());
  order.output = output.Get();
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
  WaitForSingleObject(_process->process.Get(), INFINITE);
  DWORD code = 0;
  GetExitCodeProcess(_process->process.Get(), &code);
  ending.exitStatus = static_cast<int>(code);
  ending.output = ReadFile(_process->Output());
  return ending;
}

std::vector<std::string> OwnArguments(int, char**) { return Arguments(); }

std::filesystem::path OwnProgram() {
  std::wstring path(32'768, L'\0');  // No path is longer.
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

}  // namespace tolmarpack
