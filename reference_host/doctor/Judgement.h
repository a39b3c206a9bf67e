#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "reference_host/doctor/Finding.h"

namespace refhost {

/// Judges an answer of the service's host: each HTTP status will do but 407, which is a proxy's.
/// @param number in, HTTP status or WinHTTP's error.
Finding JudgeEndpoint(std::uint32_t number);

/// @param number in, as `Tessary::GetJwtFromServer` returns it.
Finding JudgeToken(std::uint32_t number);

/// Judges this machine's clock: tokens, signed addresses and certificates hold for a time.
/// @param secondsAhead in, of the service's; negative: behind it.
Finding JudgeClock(std::int64_t secondsAhead);

/// Judges the free space of the download folder's drive.
Finding JudgeSpace(std::uint64_t bytes);

/// Judges a policy "Turn on Script Execution", which stands above what a command line asks for.
/// @param enableScripts in, the registry value EnableScripts; nothing: there is no policy.
/// @param executionPolicy in, the registry value ExecutionPolicy; empty: none.
Finding JudgeScriptPolicy(std::optional<std::uint32_t> enableScripts,
                          const std::string& executionPolicy);

}  // namespace refhost
