#include "tools/tolmarpack/Verdict.h"

#include <stdexcept>

#include "reference_host/package/PackageFault.h"
#include "tools/tolmarpack/Cabinet.h"
#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Package.h"

namespace tolmarpack {

namespace {

using refhost::PackageFault;

void JudgeOrThrow(const std::filesystem::path& cabinet, const Yardstick& yardstick,
                  Verdict& verdict) {
  const refhost::Configuration configuration =
      yardstick.configuration.value_or(refhost::Configuration{});
  verdict.signature = InspectSignature(cabinet, yardstick.trust);
  const std::string refusal = refhost::RefusalOfPackage(
      {configuration.requireSignedPackages, configuration.trustedPublishers}, verdict.signature);
  if (!refusal.empty()) throw PackageFault(CauseOfRefusal(verdict.signature), refusal);
  verdict.members = ListCabinet(cabinet);
  CheckMembers(verdict.members, configuration.maxUnpackedBytes);
  const TemporaryFolder folder;
  UnpackCabinet(cabinet, folder.Path());
  if (!std::filesystem::is_regular_file(folder.Path() / InstallerName)) {
    throw PackageFault("installer.exit-code", std::string("it holds no ") + InstallerName +
                                                  ": nothing would be installed");
  }
}

}  // namespace

Verdict Judge(const std::filesystem::path& cabinet, const Yardstick& yardstick) {
  Verdict verdict;
  try {
    JudgeOrThrow(cabinet, yardstick, verdict);
  } catch (const PackageFault& fault) {
    verdict.refusal = fault.what();
    verdict.cause = fault.cause;
  } catch (const std::runtime_error& error) {
    verdict.refusal = error.what();
    verdict.cause = "package.damaged";
  }
  return verdict;
}

}  // namespace tolmarpack
