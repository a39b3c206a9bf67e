#include "reference_host/common/ProcessStart.h"

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

/// Names the handles that the child inherits. Without that the child would get every inheritable
/// handle that any thread of this process has open at the moment.
class InheritedHandles {
 public:
  /// @param output in, null: none but `input`.
  InheritedHandles(HANDLE input, HANDLE output)
      : _handles{input, output}, _count(output != nullptr ? 2 : 1) {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    _memory.resize(size);
    _usable = InitializeProcThreadAttributeList(List(), 1, 0, &size) != 0;
    if (!_usable) return;
    _complete = UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, _handles,
                                          _count * sizeof(HANDLE), nullptr, nullptr) != 0;
  }
  ~InheritedHandles() {
    if (_usable) DeleteProcThreadAttributeList(List());
  }
  InheritedHandles(const InheritedHandles&) = delete;
  InheritedHandles& operator=(const InheritedHandles&) = delete;

  bool IsComplete() const { return _complete; }
  LPPROC_THREAD_ATTRIBUTE_LIST List() {
    return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(_memory.data());
  }

 private:
  HANDLE _handles[2];
  std::size_t _count;
  std::vector<std::byte> _memory;
  bool _usable = false;
  bool _complete = false;
};

STARTUPINFOEXW StartupInformation(const ProcessOrder& order, HANDLE null,
                                  InheritedHandles& inherited) {
  STARTUPINFOEXW startup{};
  startup.StartupInfo.cb = sizeof startup;
  startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
  startup.StartupInfo.wShowWindow = order.hidden ? SW_HIDE : SW_SHOWNORMAL;
  startup.StartupInfo.hStdInput = null;
  startup.StartupInfo.hStdOutput = startup.StartupInfo.hStdError =
      order.output != nullptr ? order.output : null;
  startup.lpAttributeList = inherited.List();
  return startup;
}

BOOL Create(const ProcessOrder& order, STARTUPINFOEXW& startup, PROCESS_INFORMATION& process) {
  const DWORD flags = EXTENDED_STARTUPINFO_PRESENT | CREATE_UNICODE_ENVIRONMENT |
                      (order.suspended ? CREATE_SUSPENDED : 0) |
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

StartedProcess StartProcess(const ProcessOrder& order) {
  const Handle null = OpenNull();
  InheritedHandles inherited(null.Get(), order.output);
  if (!null || !inherited.IsComplete()) return {};
  STARTUPINFOEXW startup = StartupInformation(order, null.Get(), inherited);
  PROCESS_INFORMATION process{};
  if (!Create(order, startup, process)) return {};
  return {Handle(process.hProcess), Handle(process.hThread)};
}

}  // namespace refhost
