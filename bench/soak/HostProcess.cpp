#include "bench/soak/HostProcess.h"

#include <filesystem>
#include <stdexcept>

#include "bench/common/Contents.h"
#include "bench/soak/Phases.h"

namespace fs = std::filesystem;

namespace {

constexpr DWORD PollMs = 4;
constexpr UINT KilledCode = 0xDEAD;

std::wstring CommandLine(const std::wstring& folder, bool again) {
  wchar_t self[MAX_PATH];
  GetModuleFileNameW(nullptr, self, MAX_PATH);
  return L"\"" + std::wstring(self) + L"\" visit \"" + folder + L"\"" + (again ? L" --again" : L"");
}

std::uintmax_t SizeOf(const fs::path& file) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  return error ? 0 : size;
}

}  // namespace

HostProcess::HostProcess(const std::wstring& folder, bool again)
    : _logPath(folder + L"\\log\\TolmarAgent.log"),
      _logRead(SizeOf(_logPath)),
      _process(refhost::StartProcess(
          {CommandLine(folder, again), folder, true, nullptr, nullptr, nullptr})) {
  if (!_process) throw std::runtime_error("the host does not start");
}

bool HostProcess::KillAt(Moment moment, DWORD limitMs) {
  const ULONGLONG limit = GetTickCount64() + limitMs;
  const HANDLE process = _process.Get();
  while (RecordsIn(Log()) < moment.record && GetTickCount64() < limit) {
    if (WaitForSingleObject(process, PollMs) == WAIT_OBJECT_0) return false;
  }
  if (WaitForSingleObject(process, moment.delayMs) == WAIT_OBJECT_0) return false;
  Kill();
  DWORD exitCode = 0;
  return GetExitCodeProcess(process, &exitCode) && exitCode == KilledCode &&
         GetTickCount64() < limit;
}

bool HostProcess::RunToEnd(DWORD limitMs, DWORD& exitCode) {
  if (WaitForSingleObject(_process.Get(), limitMs) == WAIT_OBJECT_0) {
    return GetExitCodeProcess(_process.Get(), &exitCode) != 0;
  }
  Kill();
  return false;
}

void HostProcess::Kill() {
  TerminateProcess(_process.Get(), KilledCode);
  WaitForSingleObject(_process.Get(), INFINITE);
}

const std::string& HostProcess::Log() {
  const std::string fresh = Contents(_logPath, _logRead);
  _logRead += fresh.size();
  return _log += fresh;
}
