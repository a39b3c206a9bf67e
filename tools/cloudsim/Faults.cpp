#include "tools/cloudsim/Faults.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "tools/cloudsim/JsonNode.h"
#include "tools/cloudsim/RequestTypes.h"

namespace cloudsim {
namespace {

constexpr std::int64_t Many = std::numeric_limits<std::int64_t>::max() / 2;

/// The key that orders each kind, and the values that it takes (a flag has none but true).
struct KindRow {
  const char* key;
  FaultKind kind;
  bool isFlag;
  std::int64_t least;
  std::int64_t most;
};
constexpr std::array<KindRow, 6> KindRows{{
    {"status", FaultKind::Status, false, 200, 599},
    {"delayMs", FaultKind::DelayMs, false, 0, 600'000},
    {"dropAfter", FaultKind::DropAfter, false, 0, Many},
    {"garbage", FaultKind::Garbage, true, 1, 1},
    {"resultCode", FaultKind::ResultCode, false, std::numeric_limits<std::int32_t>::min(),
     std::numeric_limits<std::int32_t>::max()},
    {"expired", FaultKind::Expired, true, 1, 1},
}};

/// @return null for a reply, which has a text in the place of a number.
const KindRow* RowOf(FaultKind kind) {
  for (const KindRow& row : KindRows) {
    if (row.kind == kind) return &row;
  }
  return nullptr;
}

bool IsFile(const std::string& on) { return on.starts_with(FilePrefix); }

std::string ReadOn(const JsonNode& node, const std::function<bool(const std::string&)>& isFile) {
  std::string on = node.Text();
  if (IsFile(on)) {
    if (!isFile(on.substr(FilePrefix.size()))) node.Fail("the catalogue has no such file");
  } else if (!IsServiceRequest(on) && on != TokenType) {
    node.Fail("must be a request's type, \"token\" or \"file:NAME\"");
  }
  return on;
}

void RequireMeaning(const JsonNode& node, const Fault& fault) {
  if (fault.Is(FaultKind::ResultCode) && !IsServiceRequest(fault.on)) {
    node.Fail("only the service's requests are answered with a result code");
  }
  if (fault.Is(FaultKind::Expired) && !IsFile(fault.on) && fault.on != "downloadRequest") {
    node.Fail("only files and downloadRequest know expired addresses");
  }
}

void ReadKind(const JsonNode& node, Fault& fault) {
  int found = 0;
  for (const KindRow& row : KindRows) {
    const std::optional<JsonNode> member = node.Find(row.key);
    if (!member) continue;
    ++found;
    fault.kind = row.kind;
    fault.value = row.isFlag ? member->Flag() : member->Number(row.least, row.most);
    if (row.isFlag && fault.value == 0) member->Fail("must be true");
    RequireMeaning(*member, fault);
  }
  if (const std::optional<JsonNode> reply = node.Find("reply")) {
    ++found;
    fault.kind = FaultKind::Reply;
    fault.reply = reply->Text();
    if (IsFile(fault.on)) reply->Fail("a file is what the catalogue has");
  }
  if (found != 1) {
    node.Fail(
        "must have one of status, delayMs, dropAfter, garbage, resultCode, expired and reply");
  }
}

bool IsFor(const Fault& fault, const std::string& on, std::int64_t call) {
  if (fault.on != on) return false;
  return fault.call == 0 || (call >= fault.call && call < fault.call + fault.count);
}

}  // namespace

Fault ReadFault(const JsonNode& node, const std::function<bool(const std::string&)>& isFile) {
  node.RequireOnly({"on", "call", "count", "status", "delayMs", "dropAfter", "garbage",
                    "resultCode", "expired", "reply"});
  Fault fault;
  fault.on = ReadOn(node.At("on"), isFile);
  if (const auto call = node.Find("call")) fault.call = call->Number(0, Many);
  if (const auto count = node.Find("count")) {
    fault.count = count->Number(1, Many);
    if (fault.call == 0) count->Fail("needs \"call\": without it every call is meant");
  }
  ReadKind(node, fault);
  return fault;
}

const char* NameOf(FaultKind kind) {
  const KindRow* row = RowOf(kind);
  return row == nullptr ? "reply" : row->key;
}

Json::Value ToJson(const Fault& fault) {
  Json::Value value;
  value["on"] = fault.on;
  if (fault.call != 0) value["call"] = fault.call;
  if (fault.count != 1) value["count"] = fault.count;
  Json::Value kind("");
  if (const KindRow* row = RowOf(fault.kind)) {
    kind = row->isFlag ? Json::Value(true) : Json::Value(Json::Int64{fault.value});
  }
  value[NameOf(fault.kind)] = std::move(kind);
  return value;
}

FaultList ReadFaults(const JsonNode& array, const std::function<bool(const std::string&)>& isFile) {
  FaultList list;
  for (const JsonNode& item : array.Items()) list.push_back(ReadFault(item, isFile));
  return list;
}

Faults::Faults(FaultList list) : _list(std::move(list)) {}

void Faults::Replace(FaultList list) {
  const std::scoped_lock lock(_mutex);
  _list.swap(list);
  _calls.clear();
}

void Faults::Switch(const Fault& fault, bool active) {
  const std::scoped_lock lock(_mutex);
  std::erase(_list, fault);
  if (active) _list.insert(_list.begin(), fault);
}

FaultList Faults::List() const {
  const std::scoped_lock lock(_mutex);
  return _list;
}

std::optional<Fault> Faults::Next(const std::string& on) {
  const std::scoped_lock lock(_mutex);
  const std::int64_t call = ++_calls[on];
  const auto found = std::find_if(_list.begin(), _list.end(),
                                  [&](const Fault& fault) { return IsFor(fault, on, call); });
  return found == _list.end() ? std::nullopt : std::optional<Fault>(*found);
}

}  // namespace cloudsim
