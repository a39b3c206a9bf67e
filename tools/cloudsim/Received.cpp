#include "tools/cloudsim/Received.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

#include "reference_host/log/LogRecord.h"
#include "tools/cloudsim/JsonNode.h"

namespace cloudsim {
namespace {

constexpr std::size_t MaxEntries = 100'000;
constexpr std::size_t MaxBytes = 64u << 20;

/// The current time as in 2031-05-01T12:30:00.250Z.
std::string TimeText() {
  using std::chrono::milliseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return refhost::ComposeLogTime(std::chrono::duration_cast<milliseconds>(now).count());
}

Json::Value ToJson(Exchange& exchange, std::uint64_t number) {
  Json::Value entry;
  entry["n"] = static_cast<Json::UInt64>(number);
  entry["time"] = TimeText();
  entry["method"] = exchange.method;
  entry["path"] = exchange.path;
  entry["query"] = exchange.query;
  entry["type"] = exchange.type;
  entry["status"] = exchange.status;
  entry["authorised"] = exchange.authorised;
  if (!exchange.fault.empty()) entry["fault"] = exchange.fault;
  if (exchange.rawBody) entry["rawBody"] = *exchange.rawBody;
  const std::pair<const char*, Json::Value*> parts[] = {{"headers", &exchange.headers},
                                                        {"body", &exchange.body},
                                                        {"replyHeaders", &exchange.replyHeaders},
                                                        {"reply", &exchange.reply}};
  for (const auto& [name, part] : parts) {
    if (!part->isNull()) entry[name] = std::move(*part);
  }
  return entry;
}

}  // namespace

std::string WithoutSignature(const std::string& query) {
  constexpr std::string_view Key = "signature=";
  std::string kept;
  for (std::size_t start = 0; start < query.size();) {
    const std::size_t end = std::min(query.find('&', start), query.size());
    const std::string part = query.substr(start, end - start);
    if (start > 0) kept += '&';
    kept += part.starts_with(Key) ? std::string(Key) : part;
    start = end + 1;
  }
  return kept;
}

Json::Value WithoutSecrets(Json::Value reply) {
  if (!reply.isObject()) return reply;
  if (reply.isMember("jwt")) reply["jwt"] = "";
  if (!reply.isMember("result") || !reply["result"].isMember("fileList")) return reply;
  for (Json::Value& file : reply["result"]["fileList"]) {
    const std::string url = file["downloadUrl"].asString();
    const std::size_t mark = url.find('?');
    if (mark == std::string::npos) continue;
    file["downloadUrl"] = url.substr(0, mark + 1) + WithoutSignature(url.substr(mark + 1));
  }
  return reply;
}

void Received::Add(Exchange exchange) {
  const std::scoped_lock lock(_mutex);
  _entries.push_back(CompactText(ToJson(exchange, ++_number)));
  _bytes += _entries.back().size();
  while (_entries.size() > MaxEntries || _bytes > MaxBytes) {
    _bytes -= _entries.front().size();
    _entries.pop_front();
  }
}

void Received::Clear() {
  const std::scoped_lock lock(_mutex);
  _entries.clear();
  _bytes = 0;
  _number = 0;
}

std::uint64_t Received::Last() const {
  const std::scoped_lock lock(_mutex);
  return _number;
}

std::string Received::Text(std::uint64_t since, std::size_t most) const {
  const std::scoped_lock lock(_mutex);
  const std::uint64_t forgotten = _number - _entries.size();
  std::size_t at = since > forgotten ? std::min(since, _number) - forgotten : 0;
  std::string text = "[";
  for (; at < _entries.size() && most > 0; ++at, --most) {
    text += text.size() == 1 ? "\n" : ",\n";
    text += _entries[at];
  }
  return text + "\n]\n";
}

}  // namespace cloudsim
