#include "tools/tolmarpack/Rules.h"

namespace tolmarpack {

const std::vector<Rule>& AllRules() {
  static const std::vector<Rule> rules{
      {"manifest", "package.json is missing or wrong"},
      {"installer-missing", "there is no install.ps1 in the root"},
      {"installer-command", "install.ps1 does not take -command"},
      {"check-missing", "there is no check script"},
      {"check-several", "there are several check scripts"},
      {"check-name", "the check script's name is not the package's own"},
      {"name-shared", "two packages have a file of the same name"},
      {"check-always", "the check succeeds whether the title is installed or not"},
      {"name-refused", "a name that the host refuses"},
      {"too-large", "more bytes than the agent or the host takes"},
      {"damaged", "the package is no whole cabinet"},
      {"unsigned", "the package is not signed"},
      {"signature", "the package's signature is not good"},
      {"publisher", "the package's publisher is not trusted by the configuration"},
      {"syntax", "PowerShell does not understand the script"},
      {"encoding", "the script's text depends on the PC"},
      {"interactive", "the script asks the user"},
      {"restart", "the script restarts the PC"},
      {"download-path", "the script relies on the download folder"},
  };
  return rules;
}

}  // namespace tolmarpack
