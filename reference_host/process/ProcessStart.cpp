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

STARTUPINFOEXW StartupInformation(const ProcessOrder& order, HANDLE null, Attributes& attributes) {
  STARTUPINFOEXW startup{};
  startup.StartupInfo.cb = sizeof startup;
  startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
  startup.StartupInfo.wShowWindow = order.hidden ? SW_HIDE : SW_SHOWNORMAL;
  startup.StartupInfo.hStdInput = null;
  startup.StartupInfo.hStdOutput = startup.StartupInfo.hStdError =
      order.output != nullptr ? order.output : null;
  startup.lpAttributeList = attributes.List();
  return startup;
}

BOOL Create(const ProcessOrder& order, STARTUPINFOEXW& startup, PROCESS_INFORMATION& process) {
  const DWORD flags = EXTENDED_STARTUPINFO_PRESENT | CREATE_UNICODE_ENVIRONMENT |
                      (order.hidden ? CREATE_NO_WINDOW : CREATE_NEW_CONSOLE);
  std::wstring line = order.commandLine;  // Windows writes into it
  const wchar_t* folder = order.workingDirectory.empty() ? nullptr : order.workingDirectory.c_str();
  if (order.token == nullptr) {
    return CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, flags, nullptr, folder,
                          &startup.StartupInfo, &process);
  }
  wchar_t desktop[] = L"winsta0\\default";
  startup.StartupInfo.lpDesktop = desktop;
  return CreateProcessAsUserW(order.token, nullptr, line.data(), nullptr, nullptr, TRUE, flags,
                              nullptr, folder, &startup.StartupInfo, &process);
}

}  // namespace

Handle StartProcess(const ProcessOrder& order) {
  const Handle null = OpenNull();
  Attributes attributes(null.Get(), order.output, order.job);
  if (!null || !attributes.IsComplete()) return {};
  STARTUPINFOEXW startup = StartupInformation(order, null.Get(), attributes);
  PROCESS_INFORMATION process{};
  if (!Create(order, startup, process)) return {};
  CloseHandle(process.hThread);
  return Handle(process.hProcess);
}

}  // namespace refhost
