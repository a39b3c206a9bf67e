#pragma once

#include "reference_host/package/CabinetFile.h"
#include "reference_host/package/CabinetPolicy.h"

namespace refhost {

/// Checks a cabinet's signature twice: by the platform's own verdict, and by a check of this
/// project that covers every byte, the signer's signature and the signer's chain up to a root that
/// this machine trusts for code signing. A package is good when both say so, since not every
/// platform's verdict can be relied upon. This project's check knows SHA-256 only. Revocation is
/// not asked for: a PC that is being set up may reach nothing but its own cloud service.
/// Blocks while the file is read and, since Windows may fetch roots and lists over the network, for
/// a minute more at most; a stop of the suite ends it. Any thread; does not throw.
SignatureFindings InspectSignature(const CabinetFile& cabinet);

}  // namespace refhost
