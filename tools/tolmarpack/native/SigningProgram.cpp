#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Signature.h"

namespace tolmarpack {

std::vector<std::string> SigningWords(const std::filesystem::path& cabinet,
                                      const std::filesystem::path& result, const Signer& signer) {
  std::vector<std::string> words{"osslsigncode", "sign", "-h", "sha256"};
  const auto add = [&words](const char* option, const std::string& value) {
    if (!value.empty()) words.insert(words.end(), {option, value});
  };
  add("-pkcs12", signer.pfx);
  add("-certs", signer.certificate);
  add("-key", signer.key);
  add("-ac", signer.chain);
  add("-readpass", signer.passwordFile);
  add("-ts", signer.timestamp);
  add("-in", TextOf(cabinet));
  add("-out", TextOf(result));
  return words;
}

}  // namespace tolmarpack
