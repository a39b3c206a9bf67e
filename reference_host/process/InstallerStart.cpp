#include "reference_host/process/InstallerStart.h"

#include "host/common/Log.h"
#include "reference_host/process/ProcessTree.h"

namespace refhost {

namespace {

/// Enclosed only while it is being started: a host that dies just then leaves no program behind
/// that nobody ever lets go.
Handle StartHere(const ProcessOrder& order) {
  ProcessTree tree(order);
  tree.Release();
  if (!tree.IsRunning()) SetLastError(tree.Error());
  return tree.TakeProcess();
}

}  // namespace

Handle StartInstaller(ProcessOrder order, const SessionToken& user) {
  unsigned long error = user.error;
  if (user.token) {
    order.token = user.token.Get();
    if (Handle started = StartProcess(order)) {
      ZLT::g_log.d(L"ProcessWrap: in the user's session, which no output comes from: %s",
                   order.commandLine.c_str());
      return started;
    }
    error = GetLastError();
    order.token = nullptr;
  }
  if (error != 0) {
    ZLT::g_log.e(L"ProcessWrap: not in the user's session, error %lu, but in the host's: %s", error,
                 order.commandLine.c_str());
  }
  return StartHere(order);
}

}  // namespace refhost
