// What needs no agent: version, memory, words for codes.

#include <algorithm>
#include <iterator>

#include "c_interface/Call.h"
#include "reference_host/causes/Causes.h"

using namespace c_interface;

namespace {

constexpr const char* ThisPage = "the host's call";

/// This layer's own, one behind the other.
constexpr refhost::Cause Own[] = {
    {"call.null", TOLMAR_NULL_ARGUMENT, 0, "A pointer that is needed is NULL.", ThisPage,
     "Look at what tolmar/agent.h says of the call."},
    {"call.utf8", TOLMAR_BAD_UTF8, 0, "A text is not UTF-8.", ThisPage,
     "Convert what comes from an API of another encoding."},
    {"call.json", TOLMAR_BAD_JSON, 0, "A document is no JSON, or not an object.", ThisPage,
     "Pass what tolmar_get_entitled_software has given."},
    {"call.titles", TOLMAR_BAD_TITLES, 0, "A list of titles has another shape than agreed.",
     ThisPage, "Pass what tolmar_get_entitled_software has given."},
    {"call.size", TOLMAR_BAD_SIZE, 0, "A structure's size is none that the library knows.",
     ThisPage, "Set its first member to its size; compare tolmar_api_version with the header's."},
    {"configuration", TOLMAR_BAD_CONFIGURATION, 0, "There is no usable configuration.",
     "the line that tolmar_start gives", "Mend the file and the key that it names."},
    {"agent.not-started", TOLMAR_NOT_STARTED, 0, "The agent is not started, or still starting.",
     ThisPage, "Wait until tolmar_start is back."},
    {"agent.already-started", TOLMAR_ALREADY_STARTED, 0,
     "The agent has been started, or is starting.", ThisPage, "Start it once."},
    {"agent.stopped", TOLMAR_STOPPED, 0, "The agent was stopped.", ThisPage,
     "Start a new process: an agent that was stopped stays so."},
    {"call.timed-out", TOLMAR_TIMED_OUT, 0, "It was not done within the time given.", "ZLT.log",
     "Wait longer, or not at all: it goes on."},
    {"host.resources", TOLMAR_NO_RESOURCES, 0, "Memory, an event or a thread is not to be had.", "",
     "Find out what uses the process's memory."},
    {"host.fault", TOLMAR_HOST_FAULT, 0, "Agent or host suite failed as neither foresees.",
     "ZLT.log", "Keep the logs and report it."},
    {"unknown", TOLMAR_UNKNOWN_CODE, 0, "", "", ""},
};

const refhost::Cause* OwnCause(std::uint32_t code) {
  const auto found = std::find_if(std::begin(Own), std::end(Own),
                                  [&](const auto& cause) { return cause.first == code; });
  return found == std::end(Own) ? nullptr : found;
}

}  // namespace

uint32_t tolmar_api_version() { return TOLMAR_API_VERSION; }

void tolmar_free(char* text) { delete[] text; }

uint32_t tolmar_describe(uint32_t code, tolmar_cause* cause) {
  return Guarded([&] {
    const auto size = Known(Needed(cause)).size;
    const refhost::Cause* known = OwnCause(code);
    if (known == nullptr) known = refhost::CauseOfCode(code);
    const bool isKnown = known != nullptr;
    if (!isKnown) known = OwnCause(TOLMAR_UNKNOWN_CODE);
    *cause = {size, known->id, known->happened, known->seen, known->remedy};
    return isKnown ? TOLMAR_OK : TOLMAR_UNKNOWN_CODE;
  });
}
