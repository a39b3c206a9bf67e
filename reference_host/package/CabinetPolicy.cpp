#include "reference_host/package/CabinetPolicy.h"

#include <algorithm>

namespace refhost {

std::string RefusalOfPackage(const PackagePolicy& policy, const SignatureFindings& findings) {
  if (!findings.present) return policy.requireSigned ? "it is not signed" : "";
  if (!findings.fault.empty()) return findings.fault;
  const auto& trusted = policy.trustedPublishers;
  if (!trusted.empty() && std::count(trusted.begin(), trusted.end(), findings.thumbprint) == 0) {
    return "its publisher is not among the trusted ones, thumbprint " + findings.thumbprint;
  }
  return {};
}

const char* CauseOfRefusal(const SignatureFindings& findings) {
  if (!findings.present) return "package.unsigned";
  return findings.fault.empty() ? "package.publisher" : "package.signature";
}

}  // namespace refhost
