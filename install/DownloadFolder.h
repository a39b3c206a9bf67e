#pragma once

#include <string>

/// Where a module's files are kept while it is checked or installed.
namespace DownloadFolder {

/// Creates the folder where it is missing; a failure shows in the steps that need the folder.
void Create();

/// @return full path of the file `name` in the folder.
std::wstring LocalPath(const std::wstring& name);

/// Deletes the folder with everything in it, with a second try after a second.
void Delete();

}  // namespace DownloadFolder
