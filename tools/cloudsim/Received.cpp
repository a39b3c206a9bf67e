#include "tools/cloudsim/Received.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "tools/cloudsim/JsonNode.h"

namespace cloudsim {
namespace {

constexpr std::size_t MaxEntries = 100'000;
constexpr std::size_t MaxBytes = 64u << 20;

/// The current time as in 2031-05-01T12:30:00.250Z.
std::string TimeText() {
  using std::chrono::milliseconds;
  const auto now = std::chrono::system_clock::now();
  const auto millis = std::chrono::duration_cast<milliseconds>(now.time_since_epoch()).count();
  const std::time_t seconds = static_cast<std::time_t>(millis / 1000);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>(millis % 1000));
  return text;
}

Json::Value ToJson(const Exchange& exchange, std::uint64_t number) {
  Json::Value entry;
  entry["n"] = static_cast<Json::UInt64>(number);
  entry["time"] = TimeText();
  entry["method"] = exchange.method;
  entry["path"] = exchange.path;
  entry["query"] = exchange.query;
  entry["type"] = exchange.type;
  entry["status"] = exchange.status;
  entry["authorised"] = exchange.authorised;
  if (exchange.rawBody) {
    entry["rawBody"] = *exchange.rawBody;
  } else if (!exchange.body.isNull()) {
    entry["body"] = exchange.body;
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

void Received::Add(const Exchange& exchange) {
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

std::string Received::Text() const {
  const std::scoped_lock lock(_mutex);
  std::string text = "[";
  for (const std::string& entry : _entries) {
    text += text.size() == 1 ? "\n" : ",\n";
    text += entry;
  }
  return text + "\n]\n";
}

}  // namespace cloudsim
