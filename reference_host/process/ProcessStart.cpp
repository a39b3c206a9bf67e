#include "reference_host/process/ProcessStart.h"

#include <vector>

namespace refhost {

namespace {

/// The null device, both ways, for a child to inherit.
Handle OpenNull() {
  SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return Handle(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable, OPEN_EXISTING, 0,
                            nullptr));
}

/// What is to be told of a new process beside the usual.
class Attributes {
 public:
  /// Names the handles that the child inherits. Without that the child would get every inheritable
  /// handle that any thread of this process has open at the moment.
  /// @param output in, null: none but `input`. @param job in, null: none.
  Attributes(HANDLE input, HANDLE output, HANDLE job)
      : _inherited{input, output}, _job(job), _count(job != nullptr ? 2 : 1) {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, _count, 0, &size);
    _memory.resize(size);
    _usable = InitializeProcThreadAttributeList(List(), _count, 0, &size) != 0;
    const std::size_t inherited = output != nullptr ? 2 : 1;
    _complete = _usable &&
                Set(PROC_THREAD_ATTRIBUTE_HANDLE_LIST, _inherited, inherited * sizeof(HANDLE)) &&
                (job == nullptr || Set(PROC_THREAD_ATTRIBUTE_JOB_LIST, &_job, sizeof _job));
  }
  ~Attributes() {
    if (_usable) DeleteProcThreadAttributeList(List());
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;

  bool IsComplete() const { return _complete; }
  LPPROC_THREAD_ATTRIBUTE_LIST List() {
    return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(_memory.data());
  }

 private:
  bool Set(DWORD_PTR attribute, HANDLE* handles, std::size_t size) {
    return UpdateProcThreadAttribute(List(), 0, attribute, handles, size, nullptr, nullptr) != 0;
  }

  HANDLE _inherited[2];
  HANDLE _job;
  DWORD _count;
  std::vector<std::byte> _memory;
  bool _usable = false;
  bool _complete = false;
};

DWORD CreationFlags(const ProcessOrder& order) {
  return CREATE_UNICODE_ENVIRONMENT | (order.hidden ? CREATE_NO_WINDOW : CREATE_NEW_CONSOLE);
}

STARTUPINFOW StartupInformation(const ProcessOrder& order) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = order.hidden ? SW_HIDE : SW_SHOWNORMAL;
  return startup;
}

const wchar_t* Folder(const ProcessOrder& order) {
  return order.workingDirectory.empty() ? nullptr : order.workingDirectory.c_str();
}

/// In this process's own session.
BOOL CreateHere(const ProcessOrder& order, PROCESS_INFORMATION& process) {
  const Handle null = OpenNull();
  Attributes attributes(null.Get(), order.output, order.job);
  if (!null || !attributes.IsComplete()) return FALSE;
  STARTUPINFOEXW startup{StartupInformation(order), attributes.List()};
  startup.StartupInfo.cb = sizeof startup;
  startup.StartupInfo.dwFlags |= STARTF_USESTDHANDLES;
  // Without a handle the system would put that of the console there, whose input never comes.
  startup.StartupInfo.hStdInput = null.Get();
  startup.StartupInfo.hStdOutput = startup.StartupInfo.hStdError =
      order.output != nullptr ? order.output : null.Get();
  std::wstring line = order.commandLine;  // Windows writes into it
  return CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE,
                        CreationFlags(order) | EXTENDED_STARTUPINFO_PRESENT, nullptr, Folder(order),
                        &startup.StartupInfo, &process);
}

/// In the token's session.
BOOL CreateThere(const ProcessOrder& order, PROCESS_INFORMATION& process) {
  STARTUPINFOW startup = StartupInformation(order);
  wchar_t desktop[] = L"winsta0\\default";
  startup.lpDesktop = desktop;
  std::wstring line = order.commandLine;
  return CreateProcessAsUserW(order.token, nullptr, line.data(), nullptr, nullptr, FALSE,
                              CreationFlags(order), nullptr, Folder(order), &startup, &process);
}

}  // namespace

Handle StartProcess(const ProcessOrder& order) {
  PROCESS_INFORMATION process{};
  if (!(order.token == nullptr ? CreateHere(order, process) : CreateThere(order, process))) {
    return {};
  }
  CloseHandle(process.hThread);
  return Handle(process.hProcess);
}

}  // namespace refhost
