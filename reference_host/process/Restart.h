#pragma once

#include "host/Export.h"

namespace refhost {

/// What installers have said of a restart of this machine since it was started, the strongest last.
enum class Restart { None, Required, Initiated };

/// @return what is recorded; any thread, any process of the machine.
ZLT_API Restart RecordedRestart();

/// @return what an installer's exit code says: 3010 (a restart is required) or 1641 (one was
/// initiated), as Windows Installer has them.
Restart RestartOf(unsigned long exitCode);

/// Records it until the machine's next start, unless something stronger is recorded already. Needs
/// the rights of an administrator, as installations do.
void RecordRestart(Restart restart);

}  // namespace refhost
