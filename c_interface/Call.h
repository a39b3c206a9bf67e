#pragma once

#include <json/value.h>

#include <cstdint>
#include <new>
#include <system_error>

#include "agent/ResultCodes.h"
#include "c_interface/tolmar/agent.h"

class TolmarAgent;

namespace c_interface {

/// What a call is refused for; never leaves the layer.
struct Refusal {
  std::uint32_t code;  ///< of `tolmar_code`
};

/// @param pointer in, what the host has passed. @return it. @throws Refusal when it is null.
template <typename T>
T* Needed(T* pointer) {
  if (pointer == nullptr) throw Refusal{TOLMAR_NULL_ARGUMENT};
  return pointer;
}

/// @return what a structure of the host says, as far as this layer knows it; all zero where there
/// is none. @throws Refusal when it is smaller than it has ever been.
template <typename Struct>
Struct Known(const Struct* given) {
  if (given == nullptr) return {};
  if (given->size < sizeof(Struct)) throw Refusal{TOLMAR_BAD_SIZE};
  return *given;
}

/// @return the agent. @throws Refusal unless it is started and not stopped.
TolmarAgent& StartedAgent();

/// Runs one call of the interface. @param work in, returns its code. @return that, or a code for
/// whatever it throws.
template <typename Work>
std::uint32_t Guarded(const Work& work) noexcept try {
  return static_cast<std::uint32_t>(work());
} catch (const Refusal& refusal) {
  return refusal.code;
} catch (const std::bad_alloc&) {
  return TOLMAR_NO_RESOURCES;
} catch (const std::system_error&) {
  return TOLMAR_NO_RESOURCES;
} catch (const Json::Exception&) {
  // A report's reply of the wrong shape, which the agent lets pass.
  return ResultCode::BadDocument;
} catch (...) {
  return TOLMAR_HOST_FAULT;
}

/// The same for a call that asks the agent. @param work in, gets the agent.
template <typename Work>
std::uint32_t WithAgent(const Work& work) {
  return Guarded([&] { return work(StartedAgent()); });
}

}  // namespace c_interface
