#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/Export.h"

namespace refhost {

/// Why something did not come about, in words for the person who has to do something about it.
/// Texts are UTF-8, one line each.
struct Cause {
  const char* id;        ///< "package.publisher": what happened to what
  std::uint32_t first;   ///< the agent's result codes that it stands for, from this
  std::uint32_t last;    ///< to this one; 0 and 0: none, the host alone knows it
  const char* happened;  ///< a sentence
  const char* seen;      ///< where to look for more; empty: nowhere
  const char* remedy;    ///< what to do
};

/// @return every cause, grouped by what it happens to. Any thread.
ZLT_API const std::vector<Cause>& AllCauses();

/// @return the cause of that id, null when there is none.
ZLT_API const Cause* FindCause(const std::string& id);

/// @return what a result code of the agent (an HTTP status, a WinHTTP error) stands for; null for
/// one that nobody has described.
ZLT_API const Cause* CauseOfCode(std::uint32_t code);

}  // namespace refhost
