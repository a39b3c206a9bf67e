#pragma once

#include <string>
#include <vector>

namespace refhost {

/// What a look at a package's signature found.
struct SignatureFindings {
  bool present = false;
  std::string fault;        ///< why the signature is not valid, empty when it is
  std::string thumbprint;   ///< SHA-256 of the signing certificate, 64 lower-case hex digits
  std::string publisher{};  ///< name in that certificate, UTF-8; a good signature or not
};

/// Which packages may be installed.
struct PackagePolicy {
  bool requireSigned = true;
  std::vector<std::string> trustedPublishers;  ///< thumbprints; empty: every valid signature
};

/// Pure.
/// @return why the package is refused (a phrase for a log line), empty when it may be unpacked. A
/// signature that is there must be valid, whether or not one is required.
std::string RefusalOfPackage(const PackagePolicy& policy, const SignatureFindings& findings);

/// @return identifier of the cause of a refusal by these findings, see Causes.h.
const char* CauseOfRefusal(const SignatureFindings& findings);

}  // namespace refhost
