#include "tools/tolmarpack/Signature.h"

#include "reference_host/package/PackageLook.h"

namespace tolmarpack {

refhost::SignatureFindings InspectSignature(const std::filesystem::path& cabinet, const Trust&) {
  return refhost::LookAtSignature(cabinet.wstring());
}

}  // namespace tolmarpack
