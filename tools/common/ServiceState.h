#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

/// What the service keeps over restarts of itself and of the machine, and what others may read of
/// it. Times are Unix seconds, 0: never. Portable.
namespace service {

using Time = std::int64_t;

/// The service's name, for the service manager and as the source of its entries in the event log.
inline constexpr const wchar_t* ServiceName = L"TolmarHost";

/// Name of the file below the suite's folder, and what it may come to.
inline constexpr const wchar_t* StateFileName = L"service.json";
inline constexpr std::size_t MaxStateBytes = 16 << 20;

/// The service's control that lets its next run come now. 128 to 255 are the service's own
/// ("ControlService function").
inline constexpr unsigned long RunControl = 128;

/// What came of one title.
struct TitleState {
  std::string name;
  std::string status;         ///< "installed", "not installed", or why it waits
  std::string version;        ///< of its list of files, as it was at the last failure; may be empty
  unsigned int failures = 0;  ///< of this version
  Time tried = 0;
  Time again = 0;          ///< not before
  std::uint32_t code = 0;  ///< the agent's
  std::string cause;       ///< empty: none
  std::string why;         ///< what is known beside the cause, a phrase
};

struct RunState {
  Time began = 0;
  Time ended = 0;          ///< 0: it goes on, or was cut off
  std::uint32_t code = 0;  ///< of the question for the titles, the agent's
};

struct State {
  Time nextRun = 0;
  Time resume = 0;  ///< when to look again at what is missing; 0: at the next run
  RunState lastRun;
  std::string waitsFor;  ///< what keeps missing titles from being installed now, a phrase
  std::map<std::string, TitleState> titles;  ///< by part number
};

/// @return the sooner of the next run and the next look at what is missing.
Time NextWork(const State& state);

/// @return the state as JSON text.
std::string TextOf(const State& state);

/// @return the state of such a text; what is missing in it, or is of another type, counts as never
/// having been.
State StateIn(const std::string& text);

}  // namespace service
