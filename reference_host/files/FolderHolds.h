#pragma once

#include <string>

namespace refhost {

/// Folders that this process works in. Each is judged when it is first held, and held until it is
/// released: whatever is in it then was there when it was judged, or came from the trusted ones.
/// Any thread; names as `LongPath` gives them.

/// Judges a folder, gives it the suite's own rules and holds it, unless it is held already. What is
/// found in it must be of the trusted ones or this process's user too: the user's own files are
/// those of the download service. Scripts that are found are remembered, see `CountsAsThere`.
/// @param create in, true: the folder and its missing parents are made with the suite's rules.
/// @return why it cannot be held (a phrase for a log line), empty when it is.
std::wstring HoldFolder(const std::wstring& name, bool create);

/// @return why `HoldFolder` has refused this folder, empty when it has not.
std::wstring RefusalOfHold(const std::wstring& name);

/// Lets go of what lies below the folder. @param itself in, true: of the folder as well.
void ReleaseFolders(const std::wstring& name, bool itself);

/// @return true when a file that is there may be used: it lies directly in a folder that is held,
/// and is no script that was found in it, or it is not below any folder that was to be held.
bool CountsAsThere(const std::wstring& name);

}  // namespace refhost
