#include "bench/soak/Phases.h"

#include <algorithm>

namespace {

/// A phase begins with a record that holds the text.
struct Mark {
  const char* text;
  const char* phase;
};

constexpr const char* Start = "start-up";
constexpr Mark Marks[] = {
    {"GetEntitledSoftware: Entry", "list of titles"},
    {"GetEntitledSoftwareStatus: Entry", "status query"},
    {"InstallEntitledSoftware: Entry", "file lists"},
    {"DownloadNInstallSoftwarePackage: Report Download progress", "download"},
    {"Calling InstallModule now", "signature and unpacking"},
    {"InstallModule: Reporting install progress", "report before the installer"},
    {"InstallModule: Launching installer process now", "installer"},
    {"InstallModule: Checking installation state now", "check after the installer"},
    {"Trying to delete KIV folder now", "deletion of the downloads"},
    {"Download and install code=", "file lists"},
    {"InstallEntitledSoftware: Exit", "status query"}};

}  // namespace

std::vector<std::string> PhaseNames() {
  std::vector<std::string> names{Start};
  for (const Mark& mark : Marks) {
    if (std::find(names.begin(), names.end(), mark.phase) == names.end())
      names.push_back(mark.phase);
  }
  return names;
}

std::string PhaseOf(const std::string& log) {
  std::string phase = Start;
  std::size_t latest = 0;
  for (const Mark& mark : Marks) {
    const std::size_t at = log.rfind(mark.text);
    if (at == std::string::npos || at < latest) continue;
    latest = at;
    phase = mark.phase;
  }
  return phase;
}

unsigned int RecordsIn(const std::string& log) {
  // Further lines of a record are indented.
  unsigned int records = 0;
  bool atStart = true;
  for (const char sign : log) {
    if (atStart && sign != ' ') ++records;
    atStart = sign == '\n';
  }
  return records;
}
