#include "tools/tolmarpack/Signature.h"

#include <stdexcept>

#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Program.h"

namespace fs = std::filesystem;

namespace tolmarpack {

void SignCabinet(const fs::path& cabinet, const fs::path& result, const Signer& signer) {
  const TemporaryFolder folder;
  const fs::path signedOne = folder.Path() / "signed.cab";
  const std::vector<std::string> words = SigningWords(cabinet, signedOne, signer);
  const Ending ending = Run(words);
  if (ending.exitStatus != 0) {
    throw std::runtime_error(words[0] + " has not signed " + TextOf(cabinet) + ": " +
                             ending.output);
  }
  Copy(signedOne, result);
}

}  // namespace tolmarpack
