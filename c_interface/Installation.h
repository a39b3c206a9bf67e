#pragma once

#include <json/forwards.h>

#include <cstdint>

#include "c_interface/tolmar/agent.h"

class TolmarAgent;

namespace c_interface {

/// Installs, and tells the host how that is getting on where it has given a callback.
/// @param document in and out, the titles. @param options in, all zero: nothing special.
/// @return the agent's code. @throws what starting a thread throws, before anything was done.
std::uint32_t Install(TolmarAgent& agent, Json::Value& document,
                      const tolmar_install_options& options);

}  // namespace c_interface
