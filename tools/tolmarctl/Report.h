#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "tools/common/Timeline.h"

namespace timeline {

/// @return the runs as lines for a person at a prompt, the newest last.
std::string AsText(const std::vector<Run>& runs);

/// @return the runs as one page of HTML, the newest first: it needs no script and asks nobody for
/// anything, which its policy enforces.
std::string AsPage(const std::vector<Run>& runs);

/// @return the runs as a list for a program.
Json::Value AsJson(const std::vector<Run>& runs);

/// @return "not installed, code 48, after 3.2 s, 1 retry".
std::string SummaryOf(const Title& title);

/// @return "2031-02-03 04:05:06 UTC".
std::string DateOf(std::int64_t time);

}  // namespace timeline
