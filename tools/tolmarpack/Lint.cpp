#include "tools/tolmarpack/Lint.h"

#include <map>
#include <memory>
#include <stdexcept>

#include "host/common/Text.h"
#include "reference_host/files/MemberName.h"
#include "tools/tolmarpack/Cabinet.h"
#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Package.h"
#include "tools/tolmarpack/ScriptRules.h"
#include "tools/tolmarpack/ScriptText.h"
#include "tools/tolmarpack/Syntax.h"

namespace fs = std::filesystem;

namespace tolmarpack {

namespace {

/// One look at packages that meet in one download folder.
class Look {
 public:
  explicit Look(const Yardstick& yardstick) : _yardstick(yardstick) {}

  void AtFolder(const fs::path& path) {
    _shown = TextOf(path) + "/";
    const PackageFolder folder = ReadFolder(path);
    AtManifest(folder);
    AtChecks(folder);
    Meet(folder.name + ".cab");
    std::vector<refhost::CabinetMember> members;
    for (const SourceFile& source : folder.sources) {
      members.push_back({ZLT::String::UTF8ToUTF16(source.name), fs::file_size(source.path)});
      AtSize(source.name, source.path);
    }
    AtMembers(members);
    AtInstaller(folder.path);
  }

  void AtCabinet(const fs::path& path) {
    _shown = TextOf(path);
    AtSize("", path);
    Meet(TextOf(path.filename()));
    AtSignature(path);
    _shown += "/";
    if (AtMembers(ListCabinet(path))) {
      _unpacked.push_back(std::make_unique<TemporaryFolder>());
      UnpackCabinet(path, _unpacked.back()->Path());
      AtInstaller(_unpacked.back()->Path());
    }
    AtCheckBeside(path);
  }

  LintReport Report() {
    LintSyntax(_scripts, _report);
    return std::move(_report);
  }

  void Add(const char* rule, const std::string& file, const std::string& text) {
    _report.Add(rule, _shown + file, 0, text);
  }

 private:
  /// A file that is fetched into the download folder beside those of all other packages.
  void Meet(const std::string& name) {
    const std::string refusal = refhost::RefusalOfMemberName(ZLT::String::UTF8ToUTF16(name));
    if (!refusal.empty()) Add("name-refused", name, refusal);
    const auto [other, isNew] = _met.try_emplace(Lower(name), _shown);
    if (!isNew) Add("name-shared", name, other->second + " has one too");
  }

  void AtManifest(const PackageFolder& folder) {
    Manifest manifest;
    std::string fault = "is not there";
    if (folder.Has(ManifestName)) {
      fault = ParseManifest(ReadFile(folder.path / ManifestName), manifest);
    }
    if (!fault.empty()) return Add("manifest", ManifestName, fault);
    for (const std::string& file : manifest.files) {
      if (!folder.Has(file)) {
        Add("manifest", ManifestName, "files: " + file + " is not there");
        continue;
      }
      AtSize(file, folder.path / PathOf(file));
      Meet(TextOf(PathOf(file).filename()));
    }
  }

  void AtChecks(const PackageFolder& folder) {
    if (folder.checks.empty()) Add("check-missing", "", "no script beside install.ps1");
    if (folder.checks.size() > 1) {
      Add("check-several", folder.checks[1], "beside " + folder.checks[0]);
    }
    for (const std::string& check : folder.checks) {
      Meet(check);
      if (Lower(check).find(Lower(folder.name)) == std::string::npos) {
        Add("check-name", check, "it does not hold \"" + folder.name + "\"");
      }
      AtScript(ScriptKind::Check, folder.path, check);
    }
  }

  void AtSize(const std::string& name, const fs::path& path) {
    if (fs::file_size(path) <= MaxFileBytes) return;
    Add("too-large", name, std::to_string(fs::file_size(path)) + " bytes");
  }

  /// @return true when no name is refused.
  bool AtMembers(const std::vector<refhost::CabinetMember>& members) {
    const refhost::Configuration configuration =
        _yardstick.configuration.value_or(refhost::Configuration{});
    refhost::MemberNames names;
    bool areGood = true;
    std::uint64_t total = 0;
    for (const refhost::CabinetMember& member : members) {
      const std::string refusal = names.Add(member.name);
      if (!refusal.empty()) Add("name-refused", ZLT::String::UTF16ToUTF8(member.name), refusal);
      areGood = areGood && refusal.empty();
      total += member.size;
    }
    if (total > configuration.maxUnpackedBytes) {
      Add("too-large", "", "it unpacks to " + std::to_string(total) + " bytes");
      return false;
    }
    return areGood;
  }

  void AtInstaller(const fs::path& folder) {
    if (fs::is_regular_file(folder / InstallerName)) {
      return AtScript(ScriptKind::Installer, folder, InstallerName);
    }
    Add("installer-missing", "", "");
  }

  void AtScript(ScriptKind kind, const fs::path& folder, const std::string& name) {
    const fs::path path = folder / PathOf(name);
    const std::wstring downloads =
        _yardstick.configuration ? _yardstick.configuration->downloadFolder : std::wstring();
    LintScript(kind, _shown + name, ReadFile(path), Lower(ZLT::String::UTF16ToUTF8(downloads)),
               _report);
    _scripts.push_back({path, _shown + name});
  }

  void AtSignature(const fs::path& path) {
    const refhost::SignatureFindings found = InspectSignature(path, _yardstick.trust);
    if (!found.present) return Add("unsigned", "", "");
    if (!found.fault.empty()) return Add("signature", "", found.fault);
    if (!_yardstick.configuration) {
      _report.unchecked.push_back("whether devices trust the publisher: no --config is given");
      return;
    }
    const std::string refusal =
        refhost::RefusalOfPackage({true, _yardstick.configuration->trustedPublishers}, found);
    if (!refusal.empty()) Add("publisher", "", refusal);
  }

  void AtCheckBeside(const fs::path& cabinet) {
    const std::string name = "check-" + TextOf(cabinet.stem()) + ".ps1";
    const fs::path folder = cabinet.has_parent_path() ? cabinet.parent_path() : ".";
    if (fs::is_regular_file(folder / PathOf(name))) {
      _shown = TextOf(folder) + "/";
      return AtScript(ScriptKind::Check, folder, name);
    }
    _report.unchecked.push_back("the check script: there is no " + name + " beside " +
                                TextOf(cabinet));
  }

  const Yardstick& _yardstick;
  LintReport _report;
  std::string _shown;  ///< what stands before a file's name
  std::map<std::string, std::string> _met;
  std::vector<ScriptToParse> _scripts;
  std::vector<std::unique_ptr<TemporaryFolder>> _unpacked;
};

}  // namespace

LintReport Lint(const std::vector<fs::path>& paths, const Yardstick& yardstick) {
  Look look(yardstick);
  for (const fs::path& path : paths) {
    if (fs::is_directory(path)) {
      look.AtFolder(path);
      continue;
    }
    try {
      look.AtCabinet(path);
    } catch (const std::runtime_error& error) {
      look.Add("damaged", "", error.what());
    }
  }
  return look.Report();
}

}  // namespace tolmarpack
