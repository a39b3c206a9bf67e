#pragma once

#include <string>

namespace refhost {

/// Fetches one file; blocks. It appears under its name only when it is whole.
/// @param localPath in, a plain full path in a folder that is trusted. @param headers in, lines
/// separated by CR LF; the last needs none.
/// @return why the file is not there (a phrase for the log), empty when it is.
std::wstring FetchFile(const std::wstring& url, const std::wstring& localPath,
                       const std::wstring& headers);

}  // namespace refhost
