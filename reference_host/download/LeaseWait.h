#pragma once

#include <windows.h>

#include <string>

namespace refhost {

/// Takes the machine's lease; blocks while another process has it, until the lease is free, one of
/// the events is signalled or `leaseWaitSeconds` have passed. What goes wrong is logged.
/// @param folder in, what the lease is for. @param stopEvent in. @param cancelHandle in, may be
/// null. @return true when this process has the lease.
bool WaitForLease(const std::wstring& folder, HANDLE stopEvent, HANDLE cancelHandle);

}  // namespace refhost
