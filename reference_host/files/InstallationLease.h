#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/Export.h"

namespace refhost {

/// Who installs on this machine.
struct LeaseHolder {
  std::uint32_t processId = 0;
  std::string program;  ///< full path, UTF-8
  std::string since;    ///< UTC, as "2031-02-03T04:05:06Z"
  std::string folder;   ///< that it downloads to and installs from, UTF-8
};

/// The machine's leave to install: one process has it at a time, from the first download of a title
/// until the title's folder is deleted or the process ends, however that comes. Others can read
/// whose it is. It is a file below ProgramData, held open. Any thread.
namespace InstallationLease {

enum class Answer { Taken, Held, Refused };

/// Takes the lease for this process, which may have it already; does not wait.
/// @param folder in, what must be left alone by others as long as the lease is held.
/// @param why out, a phrase for a log line: who has it, or what makes it impossible.
Answer Take(const std::wstring& folder, std::wstring& why);

/// Gives the lease back, when this process has it for just this folder, which it has done with.
void ReleaseWith(const std::wstring& folder);

/// @return who has the lease, this process included; nothing when nobody has it.
ZLT_API std::optional<LeaseHolder> Holder();

/// @return who has the lease, when that is another process and `path` lies in its folder.
std::optional<LeaseHolder> OtherHolderOf(const std::wstring& path);

/// @return "process 1234 (C:\...\tolmarctl.exe) since 2031-02-03T04:05:06Z".
ZLT_API std::wstring Description(const LeaseHolder& holder);

}  // namespace InstallationLease

}  // namespace refhost
