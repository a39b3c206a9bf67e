#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace cloudsim {

class JsonNode;

enum class FaultKind { Status, DelayMs, DropAfter, Garbage, ResultCode, Expired, Reply };

/// What goes wrong, and for which calls of what.
struct Fault {
  std::string on;          ///< a request's type, "token" or "file:NAME"
  std::int64_t call = 0;   ///< the first call that it is for, from 1; 0: every call
  std::int64_t count = 1;  ///< for how many calls from `call` on
  FaultKind kind = FaultKind::Status;
  std::int64_t value = 1;  ///< HTTP status, milliseconds, bytes or result code, by kind
  std::string reply{};     ///< body of the answer, for that kind

  bool Is(FaultKind wanted) const { return kind == wanted; }
};

using FaultList = std::vector<Fault>;

/// @param array in, the fault list of a document. @param isFile in, tells whether the catalogue has
/// a file of this name: a fault for any other would never come about.
/// @throws DocumentError naming the key at fault.
FaultList ReadFaults(const JsonNode& array, const std::function<bool(const std::string&)>& isFile);

/// Counts calls and picks each one's fault. Any thread.
class Faults {
 public:
  explicit Faults(FaultList list);

  /// Replaces the list; calls are counted from here on.
  void Replace(FaultList list);

  /// Counts one call of `on`. @return the first fault in the list that is for this call.
  std::optional<Fault> Next(const std::string& on);

 private:
  std::mutex _mutex;
  FaultList _list;
  std::map<std::string, std::int64_t> _calls;
};

}  // namespace cloudsim
