#include "tools/tolmarpack/Signature.h"

#include <stdexcept>

#include "reference_host/package/PackageLook.h"
#include "tools/tolmarpack/Files.h"

namespace tolmarpack {

refhost::SignatureFindings InspectSignature(const std::filesystem::path& cabinet, const Trust&) {
  return refhost::LookAtSignature(cabinet.wstring());
}

/// signtool signs in place. The password stands on its command line, since it takes it nowhere else
/// ("SignTool", Microsoft): other programs of the same user can read it meanwhile.
std::vector<std::string> SigningWords(const std::filesystem::path& cabinet,
                                      const std::filesystem::path& result, const Signer& signer) {
  if (signer.pfx.empty()) {
    throw std::runtime_error("signtool takes a PFX: openssl pkcs12 -export makes one of both");
  }
  Copy(cabinet, result);
  std::vector<std::string> words{"signtool", "sign", "/fd", "SHA256", "/f", signer.pfx};
  if (!signer.passwordFile.empty()) {
    const std::string line = ReadFile(PathOf(signer.passwordFile));
    words.insert(words.end(), {"/p", line.substr(0, line.find_first_of("\r\n"))});
  }
  if (!signer.chain.empty()) words.insert(words.end(), {"/ac", signer.chain});
  if (!signer.timestamp.empty()) {
    words.insert(words.end(), {"/tr", signer.timestamp, "/td", "SHA256"});
  }
  words.push_back(TextOf(result));
  return words;
}

}  // namespace tolmarpack
