#include "bench/soak/Device.h"

#include <algorithm>

#include "bench/common/Contents.h"
#include "bench/common/Time.h"
#include "bench/soak/Traces.h"

namespace fs = std::filesystem;

namespace {

/// How long scripts may take to end by themselves.
constexpr unsigned int PatienceMs = 20000, PollMs = 20;

bool Await(const std::function<bool()>& condition) {
  return WaitUntil(condition, PatienceMs, PollMs);
}

/// @return the files of a folder that may not be there at all.
std::vector<fs::path> In(const fs::path& folder) {
  std::error_code none;
  const fs::directory_iterator entries(folder, none);
  return {fs::begin(entries), fs::end(entries)};
}

}  // namespace

Device::Device(const fs::path& folder) : _folder(folder) {
  for (const fs::path& title : In(_folder / "expected")) {
    for (const fs::path& module : In(title)) {
      _titleOf[module.stem().string()] = title.filename().string();
    }
  }
}

void Device::Reset() const {
  EndRunningScripts();
  for (const char* name : {"download", "log", "notes", "target"}) fs::remove_all(_folder / name);
  fs::create_directories(_folder / "notes");
  DeleteEntitledValue();
}

void Device::Uninstall() const {
  for (const auto& [module, title] : _titleOf) fs::remove(Target(module) / "installed");
}

Device::Before Device::Look() const {
  Before before;
  before.installers = FindRunningScripts().installers;
  for (const auto& [module, title] : _titleOf) {
    before.begun[module] = Noted(module, "begun");
    before.whole.push_back(title);
  }
  for (const auto& [module, title] : _titleOf) {
    if (!IsWhole(module)) std::erase(before.whole, title);
  }
  return before;
}

Device::Faults Device::DoubleInstallations(const Before& before) const {
  Faults faults;
  for (const auto& [module, title] : _titleOf) {
    const bool wasWhole = std::ranges::count(before.whole, title) != 0;
    // The note of an installer that outlived its host may come late.
    const std::size_t allowed = before.installers + (wasWhole ? 0U : 1U);
    if (Noted(module, "begun") - before.begun.at(module) <= allowed) continue;
    faults.push_back(module + (wasWhole ? " was installed and is installed again"
                                        : " is installed twice in one visit"));
  }
  return faults;
}

Device::Faults Device::WatchKilledHostsChecks() const {
  const unsigned int noted = ChecksNoted();
  if (!Await([] { return FindRunningScripts().checks == 0; })) return {"a check runs for ever"};
  if (ChecksNoted() != noted) return {"a check ran on when its host was dead"};
  return {};
}

Device::Faults Device::FinalFaults() const {
  Faults faults = Leftovers();
  if (!Await([] { return FindRunningScripts().installers == 0; })) {
    faults.push_back("an installer is left over");
  }
  if (FindRunningScripts().checks != 0) faults.push_back("a check is left over");
  if (const int jobs = FindDownloadJobs().count; jobs != 0) {
    faults.push_back("jobs of the download service: " + std::to_string(jobs));
  }
  if (ReadEntitledValue() != 1) faults.push_back("the registry does not say: entitled");
  for (const auto& [module, title] : _titleOf) {
    if (!IsWhole(module)) faults.push_back(module + " is not installed as it must be");
  }
  for (const fs::path& file : In(_folder / "log")) {
    if (file.extension() == ".tmp") faults.push_back("left over: " + file.string());
  }
  return faults;
}

Device::Faults Device::Leftovers() const {
  Faults faults;
  for (const fs::path& entry : In(_folder / "download")) {
    if (fs::is_regular_file(entry) && entry.extension() == ".ps1") continue;
    faults.push_back("left over: " + entry.string());
  }
  return faults;
}

unsigned int Device::TakenUp() const {
  constexpr std::string_view Text = "of an earlier download is taken up";
  const std::string log = Contents(_folder / "log" / "ZLT.log");
  unsigned int count = 0;
  for (std::size_t at = log.find(Text); at != std::string::npos; at = log.find(Text, at + 1)) {
    ++count;
  }
  return count;
}

fs::path Device::Target(const std::string& module) const { return _folder / "target" / module; }

unsigned int Device::Noted(const std::string& module, const char* what) const {
  const std::string notes = Contents(_folder / "notes" / (module + "." + what));
  return static_cast<unsigned int>(std::ranges::count(notes, '\n'));
}

unsigned int Device::ChecksNoted() const {
  unsigned int sum = 0;
  for (const auto& [module, title] : _titleOf) sum += Noted(module, "checked");
  return sum;
}

bool Device::IsWhole(const std::string& module) const {
  const fs::path expected = _folder / "expected" / _titleOf.at(module) / (module + ".bin");
  return fs::exists(Target(module) / "installed") &&
         Contents(Target(module) / "payload.bin") == Contents(expected);
}
