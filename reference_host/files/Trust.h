#pragma once

#include <windows.h>

#include <optional>
#include <set>
#include <string>

#include "host/Export.h"
#include "reference_host/files/AccessList.h"

namespace refhost {

/// @return true when this process has rights that its user's other programs have not.
bool IsElevated();

/// @return true when this process works for nobody who is signed in: as LocalSystem, or started by
/// the service manager.
bool IsService();

/// @return true when this process could do what those who may write its files could not: what it
/// goes by is judged then.
ZLT_API bool HasHighRights();

/// @return the SIDs of those who may rule over what this process goes by: Administrators, SYSTEM,
/// TrustedInstaller, and whoever owns the Windows folder, since that one rules over everything
/// anyway. The process's own user only where it is not elevated: any program of that user's could
/// else make itself an elevated one.
const std::set<std::wstring>& Trusted();

/// @param object in, opened with READ_CONTROL.
/// @return who rules over it; nothing when that is not to be found out.
std::optional<ObjectRights> RightsOf(HANDLE object);

/// The access list of the suite's own folders: full access for administrators and SYSTEM (and this
/// process's user, where it is not elevated), for nobody else; what is made inside inherits it, the
/// parent's rules do not come down. An elevated process makes the administrators the owner.
class OwnRules {
 public:
  OwnRules();
  ~OwnRules() { LocalFree(_attributes.lpSecurityDescriptor); }
  OwnRules(const OwnRules&) = delete;
  OwnRules& operator=(const OwnRules&) = delete;

  /// @return null when they could not be made.
  SECURITY_ATTRIBUTES* Get() {
    return _attributes.lpSecurityDescriptor != nullptr ? &_attributes : nullptr;
  }

  /// Gives them to a folder, whatever rules it has.
  /// @return ERROR_SUCCESS or the system's error.
  DWORD ApplyTo(const std::wstring& folder) const;

 private:
  SECURITY_ATTRIBUTES _attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

}  // namespace refhost
