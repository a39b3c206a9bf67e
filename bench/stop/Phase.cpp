#include "bench/stop/Phase.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr Phase Phases[] = {
    {"request", "GetDownloadFiles: Entry", nullptr, false, false},
    {"retry-wait", "retryMinSeconds", nullptr, false, false},
    {"download", "OnFileDownloadProgress", nullptr, false, false},
    {"extraction", "InstallModule: Entry", nullptr, false, false},
    {"installer", nullptr, L"\\download\\package\\running", false, false},
    {"check", nullptr, L"\\download\\running", true, false},
    {"deletion", "Failed to delete KIV folder. Retry", nullptr, false, true}};

constexpr ULONGLONG PatienceMs = 120000;
constexpr DWORD PollMs = 2;

bool HasLine(const std::wstring& path, const char* text) {
  std::ifstream file{std::filesystem::path(path), std::ios::binary};
  const std::string log((std::istreambuf_iterator<char>(file)), {});
  return log.find(text) != std::string::npos;
}

bool IsOn(const Phase& phase, const std::wstring& folder) {
  if (phase.logLine != nullptr) return HasLine(folder + L"\\log\\TolmarAgent.log", phase.logLine);
  return std::filesystem::exists(folder + phase.file);
}

}  // namespace

const Phase* FindPhase(const std::string& name) {
  const auto found = std::find_if(std::begin(Phases), std::end(Phases),
                                  [&](const Phase& phase) { return phase.name == name; });
  return found == std::end(Phases) ? nullptr : found;
}

bool IsReached(const Phase& phase, const std::wstring& folder) {
  for (const ULONGLONG deadline = GetTickCount64() + PatienceMs; GetTickCount64() < deadline;) {
    if (IsOn(phase, folder)) return true;
    Sleep(PollMs);
  }
  return false;
}
