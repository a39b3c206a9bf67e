#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the events of the host suite tell, put together. Texts are UTF-8 without control
/// characters, times Unix milliseconds. Portable, like the reports that are made of it.
namespace timeline {

/// A part of a title's way, or something that went on during it.
struct Step {
  std::string phase;                   ///< "asked", "waited", "downloaded", "checked", …
  std::int64_t begin = 0;              ///< when
  std::optional<std::int64_t> length;  ///< milliseconds; nothing: its end is not told of
  std::string cause;                   ///< why it failed; empty: it did not
  std::vector<std::string> notes;      ///< phrases for a person
};

/// One title on its way, in one run.
struct Title {
  std::string partNumber;  ///< empty: what no title was named for
  std::string name;
  std::int64_t begin = 0;
  std::optional<std::int64_t> end;    ///< nothing: the run ended before
  std::string status;                 ///< "installed"; empty: unknown
  std::optional<std::uint32_t> code;  ///< the agent's
  std::string cause;                  ///< of its failure; empty: nothing is known of one
  std::string why;                    ///< what is known beside the cause, a phrase
  std::string output;                 ///< the end of its last installer's, lines
  std::string restart;                ///< "required", "initiated", or empty
  unsigned int retries = 0;
  std::vector<Step> steps;
};

/// One run of a process.
struct Run {
  std::string id;
  std::int64_t begin = 0;
  std::int64_t process = 0;
  std::vector<Title> titles;
};

/// @param lines in, the events' file: a JSON object a line. Others are passed over, since a process
/// that was killed may have left half a line.
/// @return the runs in the order of their first events.
std::vector<Run> Read(const std::string& lines);

/// @return the cause of a title that has none by its events, by its code; empty: all went well.
std::string CauseOf(const Title& title);

}  // namespace timeline
