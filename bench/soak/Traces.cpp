#include "bench/soak/Traces.h"

#include <bits.h>
#include <winternl.h>
// Behind windows.h, whose types they need.
#include <tlhelp32.h>
#include <wrl/client.h>

#include <string>
#include <vector>

#include "reference_host/base/Handle.h"

using Microsoft::WRL::ComPtr;
using refhost::Handle;

namespace {

constexpr const wchar_t* EntitlementKey = L"Software\\Corvan\\ZLT\\Entitlement";
constexpr REGSAM Rights = KEY_READ | KEY_WRITE | KEY_WOW64_64KEY;

template <typename Value>
bool Read(HANDLE process, const void* address, Value& value) {
  return ReadProcessMemory(process, address, &value, sizeof value, nullptr) != 0;
}

/// Where the system keeps it: in the process's own memory. Empty when it is gone meanwhile.
std::wstring CommandLineOf(DWORD processId) {
  const Handle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId));
  PROCESS_BASIC_INFORMATION basic{};
  PEB block{};
  RTL_USER_PROCESS_PARAMETERS parameters{};
  NtQueryInformationProcess(process.Get(), ProcessBasicInformation, &basic, sizeof basic, nullptr);
  if (!Read(process.Get(), basic.PebBaseAddress, block) ||
      !Read(process.Get(), block.ProcessParameters, parameters)) {
    return {};
  }
  std::wstring line(parameters.CommandLine.Length / sizeof(wchar_t), L'\0');
  ReadProcessMemory(process.Get(), parameters.CommandLine.Buffer, line.data(),
                    parameters.CommandLine.Length, nullptr);
  return line;
}

std::vector<DWORD> ScriptProcesses() {
  std::vector<DWORD> found;
  const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
       more = Process32NextW(snapshot.Get(), &entry)) {
    if (lstrcmpiW(entry.szExeFile, L"powershell.exe") == 0) found.push_back(entry.th32ProcessID);
  }
  return found;
}

/// Wine lists a job that is over until it looks for the next one.
bool IsOver(IBackgroundCopyJob& job) {
  BG_JOB_STATE state = BG_JOB_STATE_QUEUED;
  job.GetState(&state);
  return state == BG_JOB_STATE_ACKNOWLEDGED || state == BG_JOB_STATE_CANCELLED;
}

bool HasBytes(IBackgroundCopyJob& job) {
  ComPtr<IEnumBackgroundCopyFiles> files;
  ComPtr<IBackgroundCopyFile> file;
  if (FAILED(job.EnumFiles(&files))) return false;
  while (files->Next(1, file.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    BG_FILE_PROGRESS progress{};
    if (SUCCEEDED(file->GetProgress(&progress)) && progress.BytesTransferred > 0) return true;
  }
  return false;
}

}  // namespace

RunningScripts FindRunningScripts() {
  RunningScripts running;
  for (const DWORD script : ScriptProcesses()) {
    const bool installs = CommandLineOf(script).find(L"install.ps1") != std::wstring::npos;
    ++(installs ? running.installers : running.checks);
  }
  return running;
}

void EndRunningScripts() {
  for (const DWORD script : ScriptProcesses()) {
    TerminateProcess(Handle(OpenProcess(PROCESS_TERMINATE, FALSE, script)).Get(), 1);
  }
}

DownloadJobs FindDownloadJobs() {
  DownloadJobs found;
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  ComPtr<IBackgroundCopyManager> manager;
  ComPtr<IEnumBackgroundCopyJobs> jobs;
  if (FAILED(CoCreateInstance(CLSID_BackgroundCopyManager, nullptr, CLSCTX_LOCAL_SERVER,
                              IID_PPV_ARGS(manager.GetAddressOf()))) ||
      FAILED(manager->EnumJobs(0, &jobs))) {
    return found;
  }
  found.count = 0;
  ComPtr<IBackgroundCopyJob> job;
  while (jobs->Next(1, job.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    if (IsOver(*job.Get())) continue;
    ++found.count;
    if (HasBytes(*job.Get())) ++found.withBytes;
  }
  return found;
}

int ReadEntitledValue() {
  DWORD value = 0, size = sizeof value;
  constexpr DWORD Flags = RRF_RT_REG_DWORD | RRF_SUBKEY_WOW6464KEY;
  return RegGetValueW(HKEY_LOCAL_MACHINE, EntitlementKey, L"Entitled", Flags, nullptr, &value,
                      &size) == ERROR_SUCCESS
             ? static_cast<int>(value)
             : -1;
}

void DeleteEntitledValue() {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, EntitlementKey, 0, Rights, &key) != ERROR_SUCCESS) return;
  RegDeleteValueW(key, L"Entitled");
  RegCloseKey(key);
}
