#pragma once

#include <benchmark/benchmark.h>

#include <string>

/// @return the answer to an entitlement request, about 1 KiB for each title.
std::string EntitlementReply(int titles);

/// Reports the time per KiB of a text.
void PerKibibyteOf(benchmark::State& state, const std::string& text);
