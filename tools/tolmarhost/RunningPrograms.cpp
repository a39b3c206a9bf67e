#include "tools/tolmarhost/RunningPrograms.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <tlhelp32.h>

#include "host/common/Text.h"
#include "reference_host/base/Handle.h"

namespace {

bool IsSame(const std::wstring& one, const wchar_t* other) {
  return CompareStringOrdinal(one.c_str(), -1, other, -1, TRUE) == CSTR_EQUAL;
}

bool IsRunning(HANDLE processes, const std::wstring& program) {
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  for (BOOL isThere = Process32FirstW(processes, &entry); isThere;
       isThere = Process32NextW(processes, &entry)) {
    if (IsSame(program, entry.szExeFile)) return true;
  }
  return false;
}

}  // namespace

std::string FirstRunning(const std::vector<std::string>& programs) {
  if (programs.empty()) return {};
  const refhost::Handle processes(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  for (const std::string& program : programs) {
    if (processes && IsRunning(processes.Get(), ZLT::String::UTF8ToUTF16(program))) return program;
  }
  return {};
}
