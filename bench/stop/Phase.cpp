#include "bench/stop/Phase.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "bench/common/Contents.h"
#include "bench/common/Time.h"

namespace {

constexpr Phase Phases[] = {
    {"request", "GetDownloadFiles: Entry", nullptr, false, false},
    {"retry-wait", "retryMinSeconds", nullptr, false, false},
    {"download", "OnFileDownloadProgress", nullptr, false, false},
    {"extraction", "InstallModule: Entry", nullptr, false, false},
    {"installer", nullptr, L"\\download\\package\\running", false, false},
    {"check", nullptr, L"\\download\\running", true, false},
    {"deletion", "Failed to delete KIV folder. Retry", nullptr, false, true}};

constexpr unsigned int PatienceMs = 120000, PollMs = 2;

bool IsOn(const Phase& phase, const std::wstring& folder) {
  if (phase.logLine == nullptr) return std::filesystem::exists(folder + phase.file);
  return Contents(folder + L"\\log\\TolmarAgent.log").find(phase.logLine) != std::string::npos;
}

}  // namespace

const Phase* FindPhase(const std::string& name) {
  const auto found = std::find_if(std::begin(Phases), std::end(Phases),
                                  [&](const Phase& phase) { return phase.name == name; });
  return found == std::end(Phases) ? nullptr : found;
}

bool IsReached(const Phase& phase, const std::wstring& folder) {
  return WaitUntil([&] { return IsOn(phase, folder); }, PatienceMs, PollMs);
}
