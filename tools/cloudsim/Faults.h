#pragma once

#include <json/value.h>

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
  bool operator==(const Fault&) const = default;
};

using FaultList = std::vector<Fault>;

/// @return the key that orders such a fault.
const char* NameOf(FaultKind kind);

/// @return the fault as documents have it; of a reply without its text, which may hold anything.
Json::Value ToJson(const Fault& fault);

/// @param isFile in, as for ReadFaults. @throws DocumentError naming the key at fault.
Fault ReadFault(const JsonNode& node, const std::function<bool(const std::string&)>& isFile);

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

  /// Puts a fault in front of all others, or takes it out. Calls are counted on.
  void Switch(const Fault& fault, bool active);

  FaultList List() const;

  /// Counts one call of `on`. @return the first fault in the list that is for this call.
  std::optional<Fault> Next(const std::string& on);

 private:
  mutable std::mutex _mutex;
  FaultList _list;
  std::map<std::string, std::int64_t> _calls;
};

}  // namespace cloudsim
