#pragma once

namespace refhost {

/// Keeps this DLL loaded until the process ends. To be called before a thread is started that
/// nobody waits for: it runs the DLL's code, and waiting for it while the DLL is unloaded would
/// never end, since the loader's lock is held then.
void PinModule();

}  // namespace refhost
