#pragma once

#include <cstddef>
#include <string>

#include "host/Export.h"

namespace refhost {

/// Reads a file that the suite goes by. A host with high rights reads none that somebody without
/// these may have written.
/// @param path in, full or relative. @param mostBytes in, a larger one is refused.
/// @param bytes out, whole on success only. @param error out, the system's where that is the reason
/// that the file could not be opened; else untouched.
/// @return an empty text on success, else what is wrong, to stand behind the file's name.
ZLT_API std::wstring ReadJudgedFile(const std::wstring& path, std::size_t mostBytes,
                                    std::string& bytes, unsigned long* error = nullptr);

/// The same for a file in the suite's folder (see `SuiteFolder`). One that is not there is none.
/// @param name in, without a folder. @param bytes out, empty when there is no file, and on failure.
/// @param error out, as above, for one that is not there too.
/// @return an empty text on success and when there is no file, else what is wrong, with the path.
ZLT_API std::wstring ReadSuiteFile(const std::wstring& name, std::size_t mostBytes,
                                   std::string& bytes, unsigned long* error = nullptr);

/// Writes a file in the suite's folder, in one step: whoever reads it, after a
/// loss of power too, finds what it was before or what it is now, never a part.
/// @param name in, without a folder.
/// @return an empty text on success, else what is wrong (a phrase for a log line).
ZLT_API std::wstring WriteSuiteFile(const std::wstring& name, const std::string& bytes);

}  // namespace refhost
