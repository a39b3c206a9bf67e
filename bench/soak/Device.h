#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// The device as run.sh has set it up: what its titles must leave behind, and what their
/// scripts write down beside it. An installer notes that it begins, a check that it ends.
class Device {
 public:
  using Faults = std::vector<std::string>;

  /// What is there before a visit.
  struct Before {
    std::map<std::string, unsigned int> begun;  ///< installers so far, by module
    std::vector<std::string> whole;             ///< titles with all that they install
    std::size_t installers = 0;                 ///< that run still, since a killed visit
  };

  /// @param folder in, with expected\TITLE\MODULE.bin in it, one file a module.
  explicit Device(const std::filesystem::path& folder);

  /// Nothing installed, nothing downloaded, no logs, no notes; scripts that run still are ended.
  void Reset() const;

  /// Takes away what makes a check find the title, so that it is to be installed again.
  void Uninstall() const;

  Before Look() const;

  /// @return an entry for each module that was installed once too often since `before`.
  Faults DoubleInstallations(const Before& before) const;

  /// Waits for the checks of a host that was killed. @return what they did wrong.
  Faults WatchKilledHostsChecks() const;

  /// Waits for what runs still. @return what is not as it must be once all titles are installed.
  Faults FinalFaults() const;

  /// @return what lies in the download folder and is no check script.
  Faults Leftovers() const;

  /// @return how many transfers hosts have taken up that an earlier one had begun.
  unsigned int TakenUp() const;

 private:
  std::filesystem::path Target(const std::string& module) const;
  unsigned int Noted(const std::string& module, const char* what) const;
  unsigned int ChecksNoted() const;
  bool IsWhole(const std::string& module) const;

  const std::filesystem::path _folder;
  std::map<std::string, std::string> _titleOf;  ///< by module
};
