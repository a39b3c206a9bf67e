#pragma once

#include <json/value.h>
#include <windows.h>

#include <string>
#include <vector>

/// Packages that were fetched before their title may be installed: in a folder of their own (see
/// `WaitingFolder`), since the agent deletes the download folder behind each title. Signatures are
/// checked when a title is installed. One thread.
namespace waiting {

/// Fetches the packages of a title; blocks. Check scripts are always fetched anew.
/// @param lists in, the lists of files of its modules, as the agent gives them. @param stop in,
/// what ends it; what has come goes on the next time.
void Fetch(const Json::Value& title, const std::vector<Json::Value>& lists, HANDLE stop);

/// @return true when packages of the title wait.
bool Has(const Json::Value& title);

/// Puts a title's packages where the agent looks for them, when they are of this version of its
/// lists; none waits any more then.
void Return(const Json::Value& title, const std::string& version);

/// Deletes all that waits: nothing is missing.
void Clear();

}  // namespace waiting
