#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

namespace service {

/// @param cause in, an identifier of `refhost::AllCauses`.
/// @return true when a title failed by what passes and is none of its own: a network, a full disk,
/// a stop. Such a failure is no attempt at the title.
bool IsPassing(const std::string& cause);

/// @param lists in, the replies with a title's lists of files, a module each.
/// @return what is another when a file comes, goes or changes; addresses, which are signed anew
/// each time, do not count.
std::string VersionOfLists(const std::vector<Json::Value>& lists);

}  // namespace service
